#include "Host/Http/BearerToken.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace ZuHost
{

namespace
{

/// A file with this content. The destructor deletes it.
class TemporaryFile final
{
public:
    explicit TemporaryFile(std::string const& content)
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zu-token-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        std::ofstream(Path()) << content;
        std::filesystem::permissions(Path(), std::filesystem::perms(0600));
    }

    ~TemporaryFile()
    {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    std::filesystem::path Path() const
    {
        return folder / "token";
    }

private:
    std::filesystem::path folder;
};

ZuTest::Refusal RefusalOfFile(std::string const& content)
{
    TemporaryFile const file(content);
    ZuTest::Refusal refusal = ZuTest::RefusalOf([&] { BearerToken::ReadFile(file.Path()); });
    std::size_t const at = refusal.text.find(file.Path().string());
    return at == std::string::npos
               ? refusal
               : ZuTest::Refusal{refusal.status, refusal.text.replace(at, file.Path().string().size(), "FILE")};
}

} // namespace

TEST(BearerToken, IsTheFirstLineOfItsFileWithoutBlanksAroundIt)
{
    EXPECT_EQ(BearerToken::ReadFile(TemporaryFile("0123456789abcdef").Path()), "0123456789abcdef");
    EXPECT_EQ(BearerToken::ReadFile(TemporaryFile("\t 0123456789abcdef~! \r\nsecond\n").Path()), "0123456789abcdef~!");
}

TEST(BearerToken, RefusesAFileThatHoldsNone)
{
    ZuTest::Refusal const refusal{
        -997, "option '--token': the first line of FILE is no token: 16 characters or more, without blanks"};

    EXPECT_EQ(RefusalOfFile(""), refusal);
    EXPECT_EQ(RefusalOfFile("\n0123456789abcdef\n"), refusal);
    EXPECT_EQ(RefusalOfFile("0123456789abcde\n"), refusal);
    EXPECT_EQ(RefusalOfFile("01234567 89abcdef\n"), refusal);
    EXPECT_EQ(RefusalOfFile("0123456789abcde\xC3\xA4\n"), refusal);
}

TEST(BearerToken, RefusesAFileThatOthersCanReadOrChange)
{
    using std::filesystem::perms;
    TemporaryFile const file("0123456789abcdef");
    std::string const path = file.Path().string();
    for (perms const right : {perms::group_read, perms::group_write, perms::others_read, perms::others_write})
    {
        std::filesystem::permissions(path, perms::owner_read | right);
        EXPECT_EQ(ZuTest::RefusalOf([&] { BearerToken::ReadFile(path); }),
                  (ZuTest::Refusal{Zu::Status::BAD_ARGUMENT, "option '--token': others can read or change " + path +
                                                                 ": take that right away with chmod 600 " + path +
                                                                 ", and replace the token if they may have read it"}));
    }
    std::filesystem::permissions(path, perms::owner_read);
    EXPECT_EQ(BearerToken::ReadFile(path), "0123456789abcdef");
}

TEST(BearerToken, RefusesAFileThatCannotBeRead)
{
    EXPECT_EQ(ZuTest::RefusalOf([] { BearerToken::ReadFile("nowhere"); }),
              (ZuTest::Refusal{-997, "option '--token': nowhere: No such file or directory"}));
    EXPECT_EQ(ZuTest::RefusalOf([] { BearerToken::ReadFile("/"); }),
              (ZuTest::Refusal{-997, "option '--token': /: Is a directory"}));
}

TEST(BearerToken, IsNotAskedForWhenThereIsNone)
{
    EXPECT_TRUE(BearerToken::IsGiven("", ""));
}

TEST(BearerToken, IsTheWholeOfWhatFollowsTheScheme)
{
    EXPECT_TRUE(BearerToken::IsGiven("secret", "Bearer secret"));
    EXPECT_TRUE(BearerToken::IsGiven("secret", "bearer   secret"));
    for (char const* const header : {"", "Bearer", "Bearer ", "secret", "Basic secret", "Bearer secre",
                                     "Bearer secrets", "Bearer Secret", "Bearersecret"})
    {
        EXPECT_FALSE(BearerToken::IsGiven("secret", header)) << header;
    }
}

} // namespace ZuHost
