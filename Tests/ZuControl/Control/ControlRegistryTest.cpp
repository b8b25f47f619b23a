#include "ZuControl/Control/ControlRegistry.h"

#include "Support/FakePlugin.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZuControl
{

using ZuTest::AddLib;
using ZuTest::FakePlugin;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlRegistryTest : public testing::Test
{
protected:
    using Names = std::vector<std::string>;

    std::shared_ptr<FakePlugin> Plugin(Names const& typeNames)
    {
        auto plugin = std::make_shared<FakePlugin>();
        for (std::string const& name : typeNames)
        {
            plugin->Offer(name.c_str());
        }
        return plugin;
    }

    static Names NamesOf(ControlRegistry const& registry)
    {
        Names names;
        for (ControlInfo const* info : registry.List())
        {
            names.emplace_back(info->TypeName());
        }
        return names;
    }

    static void Add(ControlRegistry& registry, ControlInfo const& info)
    {
        registry.Add(info);
    }

    static void Remove(ControlRegistry& registry, std::string const& name)
    {
        registry.Remove(name);
    }

    static void Process(ControlRegistry& registry, ZuPlugin::PluginLib const& lib, ZuPlugin::PluginEvent event)
    {
        registry.ProcessPluginLoad(lib, event);
    }

    ZuPlugin::PluginManager manager;
    ZuTest::LogRecorder log;
};

namespace
{

/// A plug-in of the right type with a missing or throwing object.
class StrangePlugin final : public ZuPlugin::IPlugin
{
public:
    StrangePlugin(std::string pluginType, std::function<void const*()> makeObject)
        : type(std::move(pluginType)), object(std::move(makeObject))
    {
    }

    std::string Type() const override
    {
        return type;
    }

    void const* GetObject() const override
    {
        return object();
    }

private:
    std::string const type;
    std::function<void const*()> const object;
};

} // namespace

TEST_F(ControlRegistryTest, IsEmptyWithoutAPlugin)
{
    ControlRegistry const registry(manager);

    EXPECT_TRUE(registry.List().empty());
    EXPECT_EQ(registry.FindByTypeName("a"), nullptr);
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlRegistry::AttachPlugins",
                                                     "ControlRegistry loading plugins...")}));
}

TEST_F(ControlRegistryTest, ListsTypesByteWiseWhicheverPluginWasReadFirst)
{
    AddLib(manager, {Plugin({"b", "B"})});
    AddLib(manager, {Plugin({"ab", "a"})});

    ControlRegistry const registry(manager);

    EXPECT_EQ(NamesOf(registry), (Names{"B", "a", "ab", "b"}));
}

TEST_F(ControlRegistryTest, KeepsACopyOfEachRecord)
{
    auto plugin = std::make_shared<FakePlugin>();
    plugin->Offer(ControlInfo().SetTypeName("a").SetDisplayName("First"));
    AddLib(manager, {plugin});

    ControlRegistry const registry(manager);

    ASSERT_NE(registry.FindByTypeName("a"), nullptr);
    EXPECT_NE(registry.FindByTypeName("a"), &plugin->ControlInfoAt(0));
    EXPECT_EQ(std::string(registry.FindByTypeName("a")->DisplayName()), "First");
    EXPECT_EQ(registry.FindByTypeName("A"), nullptr);
}

TEST_F(ControlRegistryTest, KeepsTheFirstOfTwoTypesWithOneNameAndReadsOn)
{
    auto plugin = std::make_shared<FakePlugin>();
    plugin->Offer(ControlInfo().SetTypeName("x").SetDisplayName("First"));
    plugin->Offer(ControlInfo().SetTypeName("x").SetDisplayName("Second"));
    plugin->Offer("z");
    AddLib(manager, {plugin});

    ControlRegistry const registry(manager);

    EXPECT_EQ(NamesOf(registry), (Names{"x", "z"}));
    EXPECT_EQ(std::string(registry.FindByTypeName("x")->DisplayName()), "First");
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Info("ZuControl::ControlRegistry::AttachPlugins",
                                                                    "ControlRegistry loading plugins..."),
                                                       ZuTest::Error("ZuControl::ControlRegistry::ProcessPluginLoad",
                                                                     "Failed to load control protocol \"x\" ()"),
                                                       ZuTest::CaughtEntry(-987, ""), ZuTest::BackTrace()}));
}

TEST_F(ControlRegistryTest, PassesOverPluginsOfAnotherTypeAndThoseWithNothingBehindThem)
{
    AddLib(manager, {std::make_shared<StrangePlugin>("Another", [] { return "not a ControlPlugin"; })});
    AddLib(manager, {std::make_shared<StrangePlugin>("ZuControl.ControlPlugin", [] { return nullptr; })});

    ControlRegistry const registry(manager);

    EXPECT_TRUE(registry.List().empty());
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST_F(ControlRegistryTest, SeesALibraryThatAppearsWhileTheOneBeforeItIsRead)
{
    auto const late = Plugin({"late"});
    bool added = false;
    AddLib(manager, {std::make_shared<StrangePlugin>("ZuControl.ControlPlugin", [&]() -> void const* {
               if (!added)
               {
                   added = true;
                   EXPECT_EQ(log.CountOfText("ControlRegistry loading plugins..."), 1u); // before any is read
                   AddLib(manager, {late});
               }
               return nullptr;
           })});

    ControlRegistry const registry(manager);

    EXPECT_EQ(NamesOf(registry), (Names{"late"}));
}

TEST_F(ControlRegistryTest, NeverSeesALibraryThatIsLoadedLater)
{
    ControlRegistry const registry(manager);

    AddLib(manager, {Plugin({"late"})});

    EXPECT_TRUE(registry.List().empty());
}

TEST_F(ControlRegistryTest, PassesOnWhatAPluginThrowsWhileItIsAsked)
{
    AddLib(manager, {std::make_shared<StrangePlugin>("ZuControl.ControlPlugin",
                                                     []() -> void const* { throw std::runtime_error("no object"); })});

    EXPECT_THROW(ControlRegistry{manager}, std::runtime_error);
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST_F(ControlRegistryTest, ChangesNothingForAnEventOtherThanALoad)
{
    int asked = 0;
    auto const plugin = Plugin({"a"});
    ZuPlugin::PluginLib const lib("test.so",
                                  {std::make_shared<StrangePlugin>("ZuControl.ControlPlugin", [&]() -> void const* {
                                      ++asked;
                                      return plugin->GetObject();
                                  })});
    ControlRegistry registry(manager);

    Process(registry, lib, ZuPlugin::PluginEvent::UNLOAD);
    EXPECT_TRUE(registry.List().empty());
    Process(registry, lib, ZuPlugin::PluginEvent::LOAD);
    Process(registry, lib, ZuPlugin::PluginEvent::UNLOAD);

    EXPECT_EQ(NamesOf(registry), (Names{"a"}));
    EXPECT_EQ(asked, 3);
}

TEST_F(ControlRegistryTest, RefusesAKnownNameAndTheRemovalOfAnUnknownOne)
{
    ControlRegistry registry(manager);
    Add(registry, ControlInfo().SetTypeName("a"));

    EXPECT_EQ(RefusalOf([&] { Add(registry, ControlInfo().SetTypeName("a")); }), (Refusal{-987, ""}));
    EXPECT_EQ(RefusalOf([&] { Remove(registry, "b"); }), (Refusal{-999, ""}));
    EXPECT_EQ(NamesOf(registry), (Names{"a"}));

    Remove(registry, "a");
    EXPECT_TRUE(registry.List().empty());
}

TEST_F(ControlRegistryTest, PassesOnWhatALibraryThrowsWhileItIsSearched)
{
    class Nameless final : public ZuPlugin::IPlugin
    {
    public:
        std::string Type() const override
        {
            throw std::runtime_error("no type");
        }

        void const* GetObject() const override
        {
            return nullptr;
        }
    };
    AddLib(manager, {std::make_shared<Nameless>()});

    EXPECT_THROW(ControlRegistry{manager}, std::runtime_error);
    EXPECT_EQ(log.Lines().size(), 1u);
}

} // namespace ZuControl
