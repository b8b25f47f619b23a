#include "ZuPlugin/PluginManager.h"

#include "Platform/ZuPlugin/PluginTestFiles.h"
#include "Platform/ZuPlugin/Plugins/TestPlugin.h"
#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"
#include "ZuPlugin/PluginEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace ZuPlugin
{

namespace
{

using Texts = std::vector<std::string>;

Texts TextsOf(PluginLib const& lib, std::string const& type)
{
    Texts texts;
    for (auto const& plugin : lib.PluginsByType(type))
    {
        texts.push_back(*static_cast<std::string const*>(plugin->GetObject()));
    }
    return texts;
}

} // namespace

TEST(PluginManager, LoadsALibraryAndGivesItsPluginsByType)
{
    PluginManager manager;

    ASSERT_TRUE(manager.LoadFile(TestPluginPath("Good")));

    ASSERT_EQ(manager.Count(), 1U);
    PluginLib const& lib = manager.At(0);
    EXPECT_EQ(lib.Path(), TestPluginPath("Good"));
    EXPECT_EQ(TextsOf(lib, "Test.Text"), (Texts{"first", "second"}));
    EXPECT_EQ(TextsOf(lib, "Test.Other"), Texts{"other"});
    EXPECT_EQ(TextsOf(lib, "Test"), Texts{});
    EXPECT_TRUE(manager.Refusals().empty());
}

TEST(PluginManager, DoesNotLoadAFileTwice)
{
    PluginManager manager;

    EXPECT_TRUE(manager.LoadFile(TestPluginPath("Good")));
    EXPECT_TRUE(manager.LoadFile(TestPluginPath("Good")));

    EXPECT_EQ(manager.Count(), 1U);
}

TEST(PluginManager, LetsPluginsOutliveIt)
{
    std::shared_ptr<IPlugin> kept;
    {
        PluginManager manager;
        ASSERT_TRUE(manager.LoadFile(TestPluginPath("Good")));
        kept = manager.At(0).PluginsByType("Test.Other").at(0);
    }

    EXPECT_EQ(kept->Type(), "Test.Other");
}

struct RefusalCase
{
    char const* name;
    std::string reason; // a part of the reason in the log
};

class PluginRefusal : public testing::TestWithParam<RefusalCase>
{
};

TEST_P(PluginRefusal, NamesTheFileAndTheReason)
{
    ZuTest::LogRecorder log;
    PluginManager manager;
    std::string const path = TestPluginPath(GetParam().name);

    EXPECT_FALSE(manager.LoadFile(path));

    EXPECT_EQ(manager.Count(), 0U);
    auto const refusals = manager.Refusals();
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_EQ(refusals[0].path, path);
    EXPECT_THAT(refusals[0].reason, testing::StartsWith("Plug-in " + path + " was refused: "));
    EXPECT_THAT(refusals[0].reason, testing::HasSubstr(GetParam().reason));
    EXPECT_EQ(log.Lines(),
              (std::vector<ZuTest::LogLine>{ZuTest::UserError(refusals[0].reason),
                                            ZuTest::Error("ZuPlugin::PluginManager::Refuse", refusals[0].reason)}));
}

INSTANTIATE_TEST_SUITE_P(
    EveryWayToBeWrong, PluginRefusal,
    testing::Values(
        RefusalCase{"NoSuchFile", "there is no such file"},
        RefusalCase{"NoEntryPoints", "it is no plug-in: it has no entry point ZuPlugin_Abi"},
        RefusalCase{"OtherJson", "it was built for JSON library 3.7.0 and not for JSON library " ZU_PLUGIN_ABI_JSON},
        RefusalCase{"OtherAbi", "it was built for 'something else' and not for '" ZU_PLUGIN_ABI_TEXT "'"},
        RefusalCase{"MissingDependency", "the system says: libTestDependency.so: cannot open shared object file"},
        RefusalCase{"ThrowingMaker", "no licence for 100%s"},
        RefusalCase{"EmptyMaker", "it does not give its plug-in number 1 of 1"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(PluginManager, RunsNoCodeOfALibraryWithAnotherAbi)
{
    PluginManager manager;

    EXPECT_FALSE(manager.LoadFile(TestPluginPath("OtherJson")));

    EXPECT_EQ(std::getenv("ZU_TEST_OTHER_ABI_RAN"), nullptr);
}

TEST(PluginManager, RefusesALibraryThatIsCutShort)
{
    TemporaryFolder const folder;
    std::string const whole = ReadFile(TestPluginPath("Good"));
    std::string const path = folder.Write("half.so", whole.substr(0, whole.size() / 2));
    PluginManager manager;

    EXPECT_FALSE(manager.LoadFile(path));

    EXPECT_EQ(manager.Refusals().at(0).reason, "Plug-in " + path + " was refused: it is cut short");
}

TEST(PluginManager, LoadsAFolderInTheOrderOfNamesAndGoesOnAfterARefusal)
{
    TemporaryFolder const folder;
    std::string const good = ReadFile(TestPluginPath("Good"));
    folder.Write("c.so", good);
    folder.Write("a.so", good);
    folder.Write("b.so", "not a library");
    folder.Write("readme.txt", "not a library either");
    PluginManager manager;

    EXPECT_EQ(manager.LoadFolder(folder.Path("")), 2U);

    ASSERT_EQ(manager.Count(), 2U);
    EXPECT_EQ(manager.At(0).Path(), folder.Path("a.so"));
    EXPECT_EQ(manager.At(1).Path(), folder.Path("c.so"));
    ASSERT_EQ(manager.Refusals().size(), 1U);
    EXPECT_EQ(manager.Refusals()[0].path, folder.Path("b.so"));
}

TEST(PluginManager, RefusesAFolderThatIsNotThere)
{
    TemporaryFolder const folder;
    PluginManager manager;

    EXPECT_EQ(manager.LoadFolder(folder.Path("none")), 0U);

    ASSERT_EQ(manager.Refusals().size(), 1U);
    EXPECT_EQ(manager.Refusals()[0].reason,
              "Plug-in " + folder.Path("none") + " was refused: No such file or directory");
}

TEST(PluginManager, TakesInWhatIsInTheProcessAlready)
{
    PluginManager manager;

    manager.Add(std::make_unique<PluginLib>(
        "built in", std::vector<std::shared_ptr<IPlugin>>{std::make_shared<TestPlugin>("Test.Text", "mine")}));

    ASSERT_EQ(manager.Count(), 1U);
    EXPECT_EQ(TextsOf(manager.At(0), "Test.Text"), Texts{"mine"});
    EXPECT_THROW(manager.Add(nullptr), Zu::Exception);
    EXPECT_THROW(manager.At(1), Zu::Exception);
}

} // namespace ZuPlugin
