#include "Host/Security/SetupCode.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace ZuHost
{

class SetupCodeTest : public testing::Test
{
protected:
    static std::string CodeIn(std::string const& text)
    {
        return text.substr(text.rfind(": ") + 2, 19);
    }

    ZuTest::ScratchFolder scratch;
    std::filesystem::path file = scratch / "first-administrator.code";
    uint64 nowUsec = 1'000'000;
    bool hasTerminal = true;
    std::string shown;
    SetupCode code{scratch.path,
                   [this](std::string const& text) {
                       shown = hasTerminal ? text : "";
                       return hasTerminal;
                   },
                   [this] { return nowUsec; }};
};

TEST_F(SetupCodeTest, IsShownOnTheTerminalAlone)
{
    ZuTest::LogRecorder const log;

    code.Offer();

    EXPECT_TRUE(shown.starts_with("The code for the first administrator, for one hour: "));
    EXPECT_EQ(CodeIn(shown).size(), 19U);
    EXPECT_EQ(CodeIn(shown).find_first_not_of("-23456789ABCDEFGHJKLMNPQRSTUVWXYZ"), std::string::npos);
    EXPECT_TRUE(shown.ends_with("\n"));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(log.Lines().empty());
    EXPECT_TRUE(code.IsOffered());
    EXPECT_TRUE(code.Matches(CodeIn(shown)));
}

TEST_F(SetupCodeTest, IsReadAsPeopleType)
{
    code.Offer();
    std::string typed = CodeIn(shown);
    for (char& one : typed)
    {
        one = one == '-' ? ' ' : static_cast<char>(std::tolower(static_cast<unsigned char>(one)));
    }
    EXPECT_TRUE(code.Matches(typed + "\r\n")) << "a line of a file";
    std::erase(typed, ' ');
    EXPECT_TRUE(code.Matches(typed));
    EXPECT_FALSE(code.Matches(typed.substr(1)));
    EXPECT_FALSE(code.Matches(typed + "A"));
    EXPECT_FALSE(code.Matches(""));
    EXPECT_FALSE(code.Matches(std::string(100'000, 'A')));
}

TEST_F(SetupCodeTest, GoesIntoAFileOfItsOwnerWithoutATerminal)
{
    ZuTest::LogRecorder const log;
    hasTerminal = false;

    code.Offer();

    std::string const text = ZuTest::BytesOf(file);
    EXPECT_TRUE(code.Matches(text.substr(0, 19)));
    EXPECT_EQ(text.size(), 20U);
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.Lines().at(0).text,
              "The code for the first administrator is in the file " + file.string() + " for one hour");

    code.Spend();
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SetupCodeTest, EndsWhenItIsUsed)
{
    code.Offer();
    code.Spend();
    EXPECT_FALSE(code.IsOffered());
    EXPECT_FALSE(code.Matches(CodeIn(shown)));
    EXPECT_FALSE(code.Matches(""));
}

TEST_F(SetupCodeTest, EndsAfterAnHour)
{
    code.Offer();
    nowUsec += SetupCode::VALID_USEC - 1;
    EXPECT_TRUE(code.Matches(CodeIn(shown)));
    nowUsec += 1;
    EXPECT_FALSE(code.IsOffered());
    EXPECT_FALSE(code.Matches(CodeIn(shown)));
}

TEST_F(SetupCodeTest, IsMissingUntilItIsOffered)
{
    EXPECT_FALSE(code.IsOffered());
    EXPECT_FALSE(code.Matches(""));
}

TEST_F(SetupCodeTest, TakesTheFileAwayAtTheEnd)
{
    {
        SetupCode other(scratch.path, [](std::string const&) { return false; });
        other.Offer();
        EXPECT_TRUE(std::filesystem::exists(file));
    }
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SetupCodeTest, IsNotWrittenThroughTheFileOfAnother)
{
    ZuTest::WriteBytes(scratch / "foreign", "foreign");
    std::filesystem::create_symlink(scratch / "foreign", file);
    hasTerminal = false;

    code.Offer();

    EXPECT_EQ(ZuTest::BytesOf(scratch / "foreign"), "foreign");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(file)));
}

TEST_F(SetupCodeTest, IsNotOfferedIfTheFileCannotBeWritten)
{
    std::filesystem::path const missing = scratch / "missing";
    SetupCode other(missing, [](std::string const&) { return false; });
    EXPECT_EQ(ZuTest::RefusalOf([&] { other.Offer(); }),
              (ZuTest::Refusal{Zu::Status::FAILURE, "The code for the first administrator cannot be written to " +
                                                        (missing / "first-administrator.code").string() +
                                                        ": No such file or directory"}));
    EXPECT_FALSE(other.IsOffered());
}

namespace
{

/// Runs `action` in a process with a new terminal as its controlling one, and returns what that terminal shows and the
/// status with which the process ends.
struct TerminalRun
{
    std::string shown;
    int status = -1;
};

TerminalRun RunOnTerminal(bool hasStandardOutput)
{
    int const master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
    {
        return {};
    }
    pid_t const child = fork();
    if (child == 0)
    {
        setsid();
        int const slave = open(ptsname(master), O_RDWR); // becomes the controlling terminal
        dup2(hasStandardOutput ? slave : open("/dev/null", O_WRONLY), STDOUT_FILENO);
        bool const isWritten = SetupCode::WriteToTerminal("the text\n");
        tcdrain(slave);
        close(slave);
        _exit(isWritten ? 0 : 1);
    }
    TerminalRun run;
    std::array<char, 256> bytes{};
    for (ssize_t count = 1; count > 0 && run.shown.find('\n') == std::string::npos;)
    {
        count = read(master, bytes.data(), bytes.size());
        run.shown.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    waitpid(child, &run.status, 0);
    close(master);
    return run;
}

} // namespace

TEST(SetupCodeTerminal, IsStandardOutput)
{
    TerminalRun const run = RunOnTerminal(true);
    EXPECT_EQ(run.shown, "the text\r\n");
    EXPECT_EQ(run.status, 0);
}

TEST(SetupCodeTerminal, IsTheControllingTerminalWhenTheOutputGoesElsewhere)
{
    TerminalRun const run = RunOnTerminal(false);
    EXPECT_EQ(run.shown, "the text\r\n");
    EXPECT_EQ(run.status, 0);
}

TEST(SetupCodeTerminal, IsMissingInAService)
{
    pid_t const child = fork();
    if (child == 0)
    {
        setsid(); // no controlling terminal
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        _exit(SetupCode::WriteToTerminal("the text\n") ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
}

} // namespace ZuHost
