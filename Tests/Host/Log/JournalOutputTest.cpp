#include "Host/Log/JournalOutput.h"

#include "Host/Log/LogSink.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace ZuHost
{

namespace
{

/// A journal in a scratch folder. Standard error is connected to a file that JOURNAL_STREAM may name.
class JournalOutputTest : public testing::Test
{
protected:
    JournalOutputTest()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, socketFile.c_str(), sizeof address.sun_path - 1);
        journal = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(journal, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
        timeval const bound{20, 0};
        EXPECT_EQ(setsockopt(journal, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound), 0);
    }

    ~JournalOutputTest() override
    {
        unsetenv("JOURNAL_STREAM");
        close(journal);
    }

    /// The next datagram. Empty if none comes within the bound.
    std::string Receive() const
    {
        std::array<char, 65536> bytes{};
        ssize_t const size = recv(journal, bytes.data(), bytes.size(), 0);
        return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }

    static std::string NameOfStandardError()
    {
        struct stat file
        {
        };
        fstat(STDERR_FILENO, &file);
        return std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino);
    }

    ZuTest::ScratchFolder const folder;
    std::filesystem::path const socketFile = folder / "socket";
    int journal = -1;
};

} // namespace

TEST_F(JournalOutputTest, IsUsedWhereTheSystemHasConnectedStandardError)
{
    EXPECT_EQ(JournalOutput::OfStandardError(socketFile), nullptr);

    setenv("JOURNAL_STREAM", "1:2", 1);
    EXPECT_EQ(JournalOutput::OfStandardError(socketFile), nullptr);

    setenv("JOURNAL_STREAM", NameOfStandardError().c_str(), 1);
    EXPECT_NE(JournalOutput::OfStandardError(socketFile), nullptr);
    EXPECT_EQ(JournalOutput::OfStandardError(folder / "absent"), nullptr);
}

TEST_F(JournalOutputTest, RefusesAPathThatIsTooLongOrWhereNoneListens)
{
    EXPECT_THROW(JournalOutput(folder / std::string(200, 'x')), Zu::Exception);
    EXPECT_THROW(JournalOutput(folder / "absent"), Zu::Exception);
    EXPECT_FALSE(JournalOutput::IsJournal("1:2", -1));
}

TEST_F(JournalOutputTest, SendsEachEntryWithItsFields)
{
    LogSink sink(LogLevel::INFO, std::make_unique<JournalOutput>(socketFile));
    sink.SetServices({"AsciiTcp", "ModbusTcp"});

    sink.Write({12, "Plugins/A.cpp", Zu::Logging::FLAGS_WARNING, "ModbusTcp::Server::Start", "in use\nPRIORITY=0"});
    sink.Write({0, "", Zu::Logging::FLAGS_USER_INFO, Zu::Logging::USER_LABEL, "Service AsciiTcp, then ModbusTcp."});
    try
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "no");
    }
    catch (Zu::Exception const&)
    {
        sink.Write({7, "B.cpp", Zu::Logging::FLAGS_ERROR, "Host::Run", "ModbusTcpX"});
    }

    EXPECT_EQ(Receive(), "PRIORITY=4\nSYSLOG_IDENTIFIER=zucontrol-host\nZU_FUNCTION=ModbusTcp::Server::Start\n"
                         "ZU_SERVICE=ModbusTcp\nCODE_FILE=Plugins/A.cpp\nCODE_LINE=12\n"
                         "MESSAGE=in use\\nPRIORITY=0\n\n");
    EXPECT_EQ(Receive(), "PRIORITY=6\nSYSLOG_IDENTIFIER=zucontrol-host\nZU_SERVICE=AsciiTcp\n"
                         "MESSAGE=Service AsciiTcp, then ModbusTcp.\n\n");
    EXPECT_EQ(Receive(), "PRIORITY=3\nSYSLOG_IDENTIFIER=zucontrol-host\nZU_FUNCTION=Host::Run\nZU_STATUS=-997\n"
                         "CODE_FILE=B.cpp\nCODE_LINE=7\nMESSAGE=ModbusTcpX\n\n");
}

TEST_F(JournalOutputTest, TellsThatTheJournalDoesNotKeepUp)
{
    LogSink sink(LogLevel::INFO, std::make_unique<JournalOutput>(socketFile));
    EXPECT_EQ(sink.Fault(), "");

    // More than a socket holds; the writer counts as stalled after a second without progress.
    for (int i = 0; i < 1000; ++i)
    {
        sink.Write({i, "A.cpp", Zu::Logging::FLAGS_INFO, "Host::Run", std::string(1000, 'x').c_str()});
    }
    uint64 const deadline = wTime_AfterUsec(20'000'000);
    while (sink.Fault().empty() && wTime_NowUsec() < deadline)
    {
        std::this_thread::yield();
    }

    EXPECT_EQ(sink.Fault(), "The journal does not keep up with the log; lines of the log wait or are lost.");
}

} // namespace ZuHost
