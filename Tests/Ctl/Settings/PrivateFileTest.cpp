#include "Ctl/Settings/PrivateFile.h"

#include "Ctl/Outcome/Failure.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <latch>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace ZuCtl
{

namespace
{

using testing::HasSubstr;

std::string RefusalOf(std::function<void()> const& work)
{
    try
    {
        work();
    }
    catch (Failure const& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::LOCAL_FILE);
        return failure.what();
    }
    return "";
}

class PrivateFile : public testing::Test
{
protected:
    std::filesystem::path Write(std::string const& text, mode_t mode)
    {
        std::filesystem::path file = folder.path / "secret";
        std::ofstream(file) << text;
        chmod(file.c_str(), mode);
        return file;
    }

    ZuTest::ScratchFolder folder;
};

} // namespace

TEST_F(PrivateFile, HasASecretInItsFirstLine)
{
    EXPECT_EQ(ReadSecret(Write(" zc_abc \r\nmore\n", 0600)), "zc_abc");
    EXPECT_EQ(ReadSecret(Write("zc_abc", 0400)), "zc_abc");
}

TEST_F(PrivateFile, IsRefusedWhenOthersCanReadIt)
{
    for (mode_t const mode : {0640u, 0604u, 0620u, 0610u, 0666u})
    {
        EXPECT_THAT(RefusalOf([&] { ReadPrivateFile(Write("secret", mode)); }),
                    HasSubstr("others can read it: chmod 600"));
    }
}

TEST_F(PrivateFile, IsRefusedWhenItIsNoFileOrHasNothing)
{
    EXPECT_THAT(RefusalOf([&] { ReadPrivateFile(folder.path); }), HasSubstr("is no file"));
    EXPECT_THAT(RefusalOf([&] { ReadPrivateFile(folder.path / "none"); }), HasSubstr("No such file"));
    EXPECT_THAT(RefusalOf([&] { ReadSecret(Write("\nsecond\n", 0600)); }), HasSubstr("nothing in its first line"));
    auto const pipe = folder.path / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(RefusalOf([&] { ReadPrivateFile(pipe); }), HasSubstr("is no file"));
}

TEST_F(PrivateFile, IsWrittenForItsOwnerAlone)
{
    auto const file = folder.path / "written";
    WritePrivateFile(file, "first", false);
    struct stat facts
    {
    };
    ASSERT_EQ(stat(file.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777u, 0600u);

    EXPECT_THAT(RefusalOf([&] { WritePrivateFile(file, "second", false); }), HasSubstr("is there already"));
    EXPECT_EQ(ReadWholeFile(file), "first");
    WritePrivateFile(file, "second", true);
    EXPECT_EQ(ReadWholeFile(file), "second");
    EXPECT_THAT(RefusalOf([&] { WritePrivateFile(folder.path / "no" / "file", "x", false); }),
                HasSubstr("cannot be written"));
    std::size_t const files = static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder.path), std::filesystem::directory_iterator()));
    EXPECT_EQ(files, 1u) << "a draft stays";
}

TEST_F(PrivateFile, TakesThePlaceOfNoLinkFolderOrDevice)
{
    auto const link = folder.path / "link";
    std::filesystem::create_symlink(folder.path / "away", link);
    auto const pipe = folder.path / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);

    EXPECT_THAT(RefusalOf([&] { WritePrivateFile(link, "x", false); }), HasSubstr("is there already"));
    for (auto const& file : {link, pipe, folder.path})
    {
        EXPECT_THAT(RefusalOf([&] { WritePrivateFile(file, "x", true); }),
                    HasSubstr("is a link, a folder or a device"));
    }
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(PrivateFile, OfTwoWritersOnlyOneGetsANewName)
{
    auto const file = folder.path / "raced";
    std::string const bytes(1u << 20u, 'x'); // takes a while to write
    std::atomic<int> refusals = 0;
    std::latch start(4);
    std::vector<std::jthread> writers;
    for (int i = 0; i < 4; ++i)
    {
        writers.emplace_back([&] {
            start.arrive_and_wait();
            refusals += RefusalOf([&] { WritePrivateFile(file, bytes, false); }).empty() ? 0 : 1;
        });
    }
    writers.clear();
    EXPECT_EQ(refusals, 3);
}

} // namespace ZuCtl
