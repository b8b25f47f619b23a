#include "ZuControl/Control/ControlModule.h"

#include "Support/FakeHost.h"
#include "Support/FakePlugin.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeUpdateGate.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ResultSets.h"
#include "ZuCommon/ProblemsManager.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlModuleTest : public testing::Test
{
protected:
    ControlModuleTest()
    {
        environ.deployment = &deployment;
        environ.problems = &problems;
        environ.updateGate = &gate;
    }

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::FakeDeployment deployment;
    ZuTest::FakeUpdateGate gate{calls};
    ZuCommon::ProblemsManager problems;
    ZuPlugin::PluginManager plugins;
    ZuRest::ResourceRouter router;
    ControlModuleEnviron environ;
};

TEST_F(ControlModuleTest, IsBuiltInOrderWithNothingThatMayBeMissing)
{
    {
        ControlModule const module(plugins, router, environ);
    }

    EXPECT_EQ(log.Lines(),
              (std::vector{
                  ZuTest::Info("ZuControl::ControlRegistry::AttachPlugins", "ControlRegistry loading plugins..."),
                  ZuTest::Warning("ZuControl::ControlScanResults::ControlScanResults", "No resultHub to listen to."),
                  ZuTest::Info("ZuControl::ControlManager::CreateAll", "Creating all control protocol instances.")}));
}

TEST_F(ControlModuleTest, LeavesTheHubWhenATypeCannotBeMade)
{
    ZuCore::ResultHub hub(true);
    environ.resultHub = &hub;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [](auto const&) { return nullptr; });
    ZuTest::AddLib(plugins, {plugin});

    EXPECT_EQ(RefusalOf([this] {
                  ControlModule{plugins, router, environ};
              }),
              (Refusal{-999, "Failed to create protocol x"}));

    EXPECT_EQ(log.CountOfText("ControlScanResults constructed."), 1u);
    hub.Publish(ZuTest::MakeSet({"a"}).get()); // would call into what is no more
}

TEST_F(ControlModuleTest, EndsItsInstancesWithoutStoppingThem)
{
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [this](auto const&) { return std::make_shared<ZuTest::FakeProtocol>(calls, 3); });
    ZuTest::AddLib(plugins, {plugin});
    auto module = std::make_unique<ControlModule>(plugins, router, environ);
    calls.Clear();

    module.reset();

    EXPECT_EQ(calls.All(),
              (ZuTest::CallLog::Calls{"RemoveStatusHandler", "RemoveParamsHandler", "RemoveOutputsHandler", "~"}));
}

TEST_F(ControlModuleTest, HangsItsResourcesIntoTheRouterForAsLongAsItLives)
{
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [this](auto const&) { return std::make_shared<ZuTest::FakeProtocol>(calls, 3); });
    ZuTest::AddLib(plugins, {plugin});
    {
        ControlModule const module(plugins, router, environ);

        EXPECT_EQ(router.Resources().size(), 13u);
        EXPECT_TRUE(router.Find("/controls/x/outputs").has_value());
    }

    EXPECT_FALSE(router.Find("/controls").has_value());
}

} // namespace ZuControl
