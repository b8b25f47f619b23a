#include "Host/Security/LoginNotice.h"

#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

class LoginNoticeTest : public testing::Test
{
protected:
    std::string Read(std::string const& bytes) const
    {
        ZuTest::WriteBytes(file, bytes);
        return LoginNotice::ReadFile(file);
    }

    std::string RefusalOf(std::string const& bytes) const
    {
        ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { Read(bytes); });
        EXPECT_EQ(refusal.status, -997);
        EXPECT_TRUE(refusal.text.starts_with(head)) << refusal.text;
        return refusal.text.substr(std::min(head.size(), refusal.text.size()));
    }

    ZuTest::ScratchFolder const folder;
    std::filesystem::path const file = folder / "notice";
    std::string const head = "option '--login-notice': the file '" + file.string() + "' ";
};

} // namespace

TEST_F(LoginNoticeTest, IsTheTextOfAFile)
{
    EXPECT_EQ(Read("Only for the staff of hall 3.\n\nEverything is noted. \r\n"),
              "Only for the staff of hall 3.\n\nEverything is noted.");
    EXPECT_EQ(Read(std::string(LoginNotice::MAX_BYTES, 'x')).size(), LoginNotice::MAX_BYTES);
    EXPECT_EQ(Read("H\xC3\xB6he\t1"), "H\xC3\xB6he\t1");
}

TEST_F(LoginNoticeTest, IsRefusedIfItIsNoShortText)
{
    EXPECT_EQ(RefusalOf(" \n"), "has no text");
    EXPECT_EQ(RefusalOf(std::string(LoginNotice::MAX_BYTES + 1, 'x')), "has more than 2000 bytes");
    EXPECT_EQ(RefusalOf("a\x1B[2Jb"), "is no text in UTF-8, or has control characters");
    EXPECT_EQ(RefusalOf("a\xFF"), "is no text in UTF-8, or has control characters");
    EXPECT_EQ(ZuTest::RefusalOf([&] { LoginNotice::ReadFile(folder / "none"); }).text,
              "option '--login-notice': the file '" + std::string(folder / "none") +
                  "' cannot be read: No such file or directory");
}

} // namespace ZuHost
