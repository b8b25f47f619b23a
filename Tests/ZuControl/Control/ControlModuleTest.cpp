#include "ZuControl/Control/ControlModule.h"

#include "Support/FakeHost.h"
#include "Support/FakePlugin.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeResource.h"
#include "Support/FakeUpdateGate.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ResultSets.h"
#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// A load blocks until the test releases it.
class HeldJobs final : public ZuCommon::PersistManager
{
public:
    void LoadJob(std::string const& /*name*/) override
    {
        entered.Open();
        release.Wait();
    }

    ZuTest::Latch entered;
    ZuTest::Latch release;
};

} // namespace

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
    hub.Publish(ZuTest::MakeSet({"a"}).get()); // a handler left behind would call the destroyed module
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

        EXPECT_EQ(router.Resources().size(), 16u);
        EXPECT_TRUE(router.Find("/controls/x/outputs").has_value());
    }

    EXPECT_FALSE(router.Find("/controls").has_value());
}

TEST_F(ControlModuleTest, TellsWhatItHasDone)
{
    ZuTest::Latch ended; // outlives the module: a thread of the module opens it
    ZuCore::ResultHub hub(true);
    environ.resultHub = &hub;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    ControlProtocolOperations* operations = nullptr;
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        operations = given.operations;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);

    hub.Publish(ZuTest::MakeSet({"a", "b"}).get());
    operations->AddOpEndEventHandler(ZuEthernetProtocol{3}, [&ended](int) { ended.Open(); });
    operations->StartScan(ZuEthernetProtocol{3}); // fails, because there is no core
    ASSERT_TRUE(ended.Wait());

    ControlStatistics const statistics = module.Statistics();
    EXPECT_EQ(statistics.resultSets, 1u);
    EXPECT_EQ(statistics.resultItems, 2u);
    EXPECT_EQ(statistics.itemsHandedOn, 0u);
    EXPECT_EQ(statistics.operationsSucceeded, 0u);
    EXPECT_EQ(statistics.operationsFailed, 1u);
    EXPECT_EQ(statistics.operationsRefused, 0u);
    ASSERT_EQ(statistics.protocols.size(), 1u);
    EXPECT_EQ(statistics.protocols[0].typeName, "x");
    EXPECT_EQ(statistics.protocols[0].batches, 0u);
    EXPECT_EQ(module.LastDeliveryTo("x").usec, 0u);
    EXPECT_EQ(RefusalOf([&] { module.LastDeliveryTo("y"); }),
              (Refusal{Zu::Status::NOT_FOUND, "There is no service 'y'."}));
}

TEST_F(ControlModuleTest, TellsHowItsThreadsFareWithoutWaitingForThem)
{
    HeldJobs jobs; // outlives the module: a worker of the module blocks in it
    environ.persistManager = &jobs;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    ControlProtocolOperations* operations = nullptr;
    plugin->Offer("other", [this](auto const&) { return std::make_shared<ZuTest::FakeProtocol>(calls, 2); });
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        operations = given.operations;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);
    EXPECT_EQ(module.Vitals().operation.sinceUsec, 0u);
    uint64 const beginUsec = wTime_NowUsec();
    operations->LoadJob(ZuEthernetProtocol{3}, "job");
    ASSERT_TRUE(jobs.entered.Wait());

    ControlVitals const vitals = module.Vitals();

    jobs.release.Open();
    EXPECT_EQ(vitals.operation.typeName, "x");
    EXPECT_STREQ(vitals.operation.name, "job load");
    EXPECT_GE(vitals.operation.sinceUsec, beginUsec);
    ASSERT_EQ(vitals.dispatchers.size(), 2u);
    EXPECT_EQ(vitals.dispatchers[0].typeName, "other");
    EXPECT_EQ(vitals.dispatchers[1].typeName, "x");
    EXPECT_FALSE(vitals.dispatchers[1].hasDied);
    EXPECT_EQ(vitals.dispatchers[1].busySinceUsec, 0u);
    EXPECT_GT(vitals.metrics.lastDoneUsec, 0u);
    ASSERT_EQ(vitals.failedStarts.size(), 2u);
    EXPECT_EQ(vitals.failedStarts[0].typeName, "other");
    EXPECT_EQ(vitals.failedStarts[1].typeName, "x");
    EXPECT_EQ(vitals.failedStarts[1].count, 0u);
}

TEST_F(ControlModuleTest, TakesOperationsOfTheHostInTurnWithThoseOfProtocols)
{
    HeldJobs jobs; // outlives the module: a worker of the module blocks in it
    environ.persistManager = &jobs;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    ControlProtocolOperations* operations = nullptr;
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        operations = given.operations;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);
    ZuTest::CallLog ends;
    auto const subscription = module.SubscribeToOperations([&](ControlOperationEnd const& end) {
        ends.Add((end.isOfHost ? "host" : end.typeName) + " " + std::to_string(end.status));
    });

    module.Operations().LoadJob(HOST_PROTOCOL, "job");

    ASSERT_TRUE(jobs.entered.Wait());
    ControlVitals const vitals = module.Vitals();
    EXPECT_EQ(RefusalOf([&] { operations->StartScan(ZuEthernetProtocol{3}); }).status, Zu::Status::BUSY);
    jobs.release.Open();
    EXPECT_TRUE(vitals.operation.isOfHost);
    EXPECT_EQ(vitals.operation.typeName, "");
    EXPECT_TRUE(ends.WaitFor("host 1"));
    EXPECT_EQ(ends.All(), (ZuTest::CallLog::Calls{"x -976", "host 1"}));
}

TEST_F(ControlModuleTest, TellsOfTheOthersWhenAProtocolThrowsInsteadOfItsNumber)
{
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("bad", [this](auto const&) {
        auto const bad = std::make_shared<ZuTest::FakeProtocol>(calls, 2);
        bad->on["EthernetProtocolId"] = [] { throw 7; };
        return bad;
    });
    plugin->Offer("good", [this](auto const&) { return std::make_shared<ZuTest::FakeProtocol>(calls, 3); });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);

    ControlStatistics const statistics = module.Statistics();
    ControlVitals const vitals = module.Vitals();

    ASSERT_EQ(statistics.protocols.size(), 2u);
    EXPECT_EQ(statistics.protocols[0].typeName, "bad");
    EXPECT_EQ(statistics.protocols[1].typeName, "good");
    ASSERT_EQ(vitals.dispatchers.size(), 1u);
    EXPECT_EQ(vitals.dispatchers[0].typeName, "good");
    EXPECT_EQ(module.LastDeliveryTo("bad").usec, 0u);
}

TEST_F(ControlModuleTest, TellsWhichOperationOfAProtocolFails)
{
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    std::shared_ptr<ZuTest::FakeProtocol> protocol;
    plugin->Offer("x", [&](auto const&) { return protocol = std::make_shared<ZuTest::FakeProtocol>(calls, 3); });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);
    EXPECT_TRUE(module.Vitals().faults.empty());
    protocol->on["OnStartScan"] = [] { throw 42; };

    EXPECT_THROW(module.Controls().GetInstance("x").OnStartScan(), int);

    std::vector<ControlVitals::Fault> const faults = module.Vitals().faults;
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].typeName, "x");
    EXPECT_EQ(faults[0].operation, "OnStartScan");
}

TEST_F(ControlModuleTest, PassesOnTheRefusalsOfServicesWithTheirNames)
{
    ControlProtocolOperations* operations = nullptr;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        operations = given.operations;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);
    ZuTest::CallLog refusals;
    auto subscription = module.SubscribeToRefusals([&](ControlRefusal const& refusal) {
        refusals.Add(refusal.typeName + ", " + refusal.client.address + " as " +
                     ZuCommon::RoleName(refusal.client.role) + ", " + refusal.what + ", " + refusal.reason);
    });

    operations->Notices().NotifyRefusal(
        {ZuEthernetProtocol{3}, {"10.0.0.7", ZuCommon::Role::VIEWER}, "function 6", "no"});
    operations->Notices().NotifyRefusal({ZuEthernetProtocol{4}, {}, "connection", "never"});
    subscription.End();
    operations->Notices().NotifyRefusal({ZuEthernetProtocol{3}, {}, "connection", "untold"});

    EXPECT_EQ(refusals.All(),
              (std::vector<std::string>{"x, 10.0.0.7 as viewer, function 6, no", ",  as none, connection, never"}));
}

TEST_F(ControlModuleTest, LetsServicesReadTheirFilesAgain)
{
    ControlProtocolOperations* operations = nullptr;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        operations = given.operations;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule module(plugins, router, environ);
    unsigned reads = 0;
    auto const reader = operations->Notices().SubscribeToReplacedFiles([&] {
        ++reads;
        throw 7;
    });

    module.ReadFilesAgain(); // the exception is logged

    EXPECT_EQ(reads, 1u);
}

TEST_F(ControlModuleTest, LetsAProtocolReadResourcesWhileItIsStarted)
{
    ZuTest::FakeResource health;
    health.Show({{"status", {{"text", "good"}}}});
    router.Register("/health", health);
    ZuRest::ResourceRequestProcessor processor(router);
    environ.requestProcessor = &processor;
    IControlResourceAdaptor* adaptor = nullptr;
    std::shared_ptr<ZuTest::FakeProtocol> protocol;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        adaptor = given.resourceAdaptor;
        return protocol = std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule const module(plugins, router, environ);
    std::string status;
    std::string own;
    protocol->on["Start"] = [&] {
        adaptor->Read("/health#/status/text", status, 30'000'000);
        adaptor->Read("/controls/x#/enabled", own, 30'000'000);
    };
    ZuRest::Request request;
    request.method = "PUT";
    request.path = "/controls/x";
    request.body = R"({"enabled": true})";

    EXPECT_EQ(processor.Process(request).answer.status, 200u);

    EXPECT_EQ(status, R"("good")");
    EXPECT_EQ(own, "false"); // the value before the running change
    router.Deregister("/health", false);
}

TEST_F(ControlModuleTest, HasNoResourcesToReadForAProtocolWithoutAProcessor)
{
    IControlResourceAdaptor* adaptor = nullptr;
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [&](ControlProtocol::ControlProtocolEnviron const& given) {
        adaptor = given.resourceAdaptor;
        return std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    });
    ZuTest::AddLib(plugins, {plugin});
    ControlModule const module(plugins, router, environ);

    std::string text;
    EXPECT_EQ(RefusalOf([&] { adaptor->Read("/health", text, 30'000'000); }),
              (Refusal{-999, "Failed to read resource."}));

    EXPECT_EQ(
        log.CountOfText("Exception processing reading resource path due to (This system has no resource at /health)"),
        1u);
}

TEST_F(ControlModuleTest, BringsTheMetricsOfItsProtocolsUpToDateAndStopsBeforeTheyEnd)
{
    auto const plugin = std::make_shared<ZuTest::FakePlugin>();
    plugin->Offer("x", [this](auto const&) { return std::make_shared<ZuTest::FakeProtocol>(calls, 3); });
    ZuTest::AddLib(plugins, {plugin});
    auto module = std::make_unique<ControlModule>(plugins, router, environ);

    ASSERT_TRUE(calls.WaitFor("UpdateMetrics"));

    module.reset();
    EXPECT_EQ(calls.All().back(), "~");
}

} // namespace ZuControl
