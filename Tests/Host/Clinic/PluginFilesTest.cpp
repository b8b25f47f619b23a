#include "Host/Clinic/PluginFiles.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace ZuHost
{

namespace
{

using Paths = std::vector<std::filesystem::path>;

class PluginFilesTest : public testing::Test
{
protected:
    PluginFilesTest()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zu-plugins-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }

    ~PluginFilesTest() override
    {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    std::filesystem::path Place(std::string const& name)
    {
        std::filesystem::create_directories((folder / name).parent_path());
        std::ofstream(folder / name) << "x";
        return folder / name;
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(PluginFilesTest, AreThoseOfEachFolderByName)
{
    auto const b = Place("one/b.so");
    auto const a = Place("one/a.so");
    auto const c = Place("another/c.so");
    Place("one/a.so.1");
    Place("one/readme.txt");
    Place("one/below/d.so");

    EXPECT_EQ(FindPluginFiles({folder / "one", folder / "another"}), (Paths{a, b, c}));
}

TEST_F(PluginFilesTest, AreNoneOfAnEmptyFolder)
{
    EXPECT_EQ(FindPluginFiles({folder}), Paths{});
}

TEST_F(PluginFilesTest, OfAFolderThatIsNotThereAreRefused)
{
    auto const nowhere = folder / "nowhere";

    EXPECT_EQ(ZuTest::RefusalOf([&] { FindPluginFiles({nowhere}); }),
              (ZuTest::Refusal{-998, nowhere.string() + ": No such file or directory"}));
}

TEST_F(PluginFilesTest, OfNoFolderAreThoseBesideTheProgram)
{
    auto const plugins = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "plugins";

    Paths const files = FindPluginFiles({});

    ASSERT_FALSE(files.empty());
    EXPECT_EQ(files.front().parent_path(), plugins);
}

} // namespace ZuHost
