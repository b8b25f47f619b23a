#include "Support/FakeHost.h"
#include "Support/FakePersistStore.h"
#include "Support/FakePlugin.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeUpdateGate.h"
#include "Support/ResultSets.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>

#include <stdexcept>

// Two protocols go through the usual calls of a protocol. In one of them, one operation at a time throws. The other
// protocol and the module must keep working.

namespace ZuControl
{

namespace
{

using ZuCommon::PersistDomain;

/// Keeps the control manager that registers itself.
class Registry final : public IPersistRegistry
{
public:
    uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& /*name*/) override
    {
        manager = dynamic_cast<IControlManager*>(&handler);
        return 1;
    }

    void Deregister(uint64 /*id*/) override
    {
    }

    void MarkModified(ZuCommon::IPersistHandler& /*handler*/, PersistDomain /*domain*/, uint64 /*reserved*/) override
    {
    }

    IControlManager* manager = nullptr;
};

} // namespace

class ThrowingProtocol : public testing::TestWithParam<char const*>
{
protected:
    ThrowingProtocol()
    {
        auto const plugin = std::make_shared<ZuTest::FakePlugin>();
        plugin->Offer("bad", [this](auto const&) { return bad; });
        plugin->Offer("good", [this](auto const&) { return good; });
        ZuTest::AddLib(plugins, {plugin});
        environ.deployment = &deployment;
        environ.problems = &problems;
        environ.updateGate = &gate;
        environ.persistRegistry = &registry;
        environ.resultHub = &hub;
        environ.scanStartStopEvent = &scanStartStopEvent;
        environ.factoryRestoreEvent = &factoryRestoreEvent;
        deployment.physicalSensor = true;
        module = std::make_unique<ControlModule>(plugins, router, environ);
    }

    /// The HTTP status that a client gets.
    uint32 Ask(char const* method, std::string const& path, char const* body = "")
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        return processor.Process(request).answer.status;
    }

    /// Runs a step that may throw to its caller, the host.
    template <typename Step>
    static void Dare(Step&& step)
    {
        try
        {
            step();
        }
        catch (std::exception const&)
        {
        }
    }

    void LeadALife()
    {
        Ask("GET", "/controls/bad");
        Ask("PUT", "/controls/bad", R"({"enabled": true})");
        Ask("PUT", "/controls/bad", R"({"parameters": {}})");
        Ask("GET", "/controls/bad/outputs");
        Ask("GET", "/controls/bad/registerAssemblies");
        Ask("GET", "/controls/bad/metrics");
        Dare([&] { scanStartStopEvent.Fire(true); });
        hub.Publish(ZuTest::MakeSet({"a"}).get());
        Dare([&] { scanStartStopEvent.Fire(false); });
        Dare([&] { factoryRestoreEvent.Fire(); });
        for (PersistDomain const domain : {PersistDomain::PROTOCOL, PersistDomain::JOB})
        {
            Dare([&] { registry.manager->InitPersistDomain(domain, store); });
            Dare([&] { registry.manager->SavePersistDomain(domain, store); });
            Dare([&] { registry.manager->LoadPersistDomain(domain, store); });
        }
        IControlInstance& instance = registry.manager->GetInstance("bad");
        Dare([&] { instance.MetricsKeeper().UpdateMetrics(); });
        Dare([&] { instance.ResetInstance(false, IControlInstance::DataToResetAll); });
        Ask("PUT", "/controls/bad", R"({"enabled": false})");
    }

    ZuTest::CallLog calls;
    ZuTest::CallLog callsOfGood;
    std::shared_ptr<ZuTest::FakeProtocol> bad = std::make_shared<ZuTest::FakeProtocol>(calls, 101);
    std::shared_ptr<ZuTest::FakeProtocol> good = std::make_shared<ZuTest::FakeProtocol>(callsOfGood, 102);
    ZuTest::FakeDeployment deployment;
    ZuTest::CallLog gateCalls;
    ZuTest::FakeUpdateGate gate{gateCalls};
    ZuTest::FakePersistStore store;
    Registry registry;
    ZuCommon::ProblemsManager problems;
    ZuCore::ResultHub hub{true};
    Zu::Event<bool> scanStartStopEvent;
    Zu::Event<> factoryRestoreEvent;
    ZuPlugin::PluginManager plugins;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    ControlModuleEnviron environ;
    std::unique_ptr<ControlModule> module;
};

TEST_P(ThrowingProtocol, LeavesTheOthersAndTheModuleAlone)
{
    bad->on[GetParam()] = [] { ZU_THROW(Zu::Status::WRONG_STATE, "not now: 100%% of them"); };
    LeadALife();
    bad->on[GetParam()] = [] { throw std::runtime_error("never: 100%s of them"); };
    LeadALife();

    EXPECT_EQ(Ask("PUT", "/controls/good", R"({"enabled": true})"), 200u);
    EXPECT_EQ(Ask("GET", "/controls/good"), 200u);
    EXPECT_EQ(Ask("GET", "/controls"), 200u);

    module.reset();
    EXPECT_EQ(bad.use_count(), 1); // the module keeps no reference to the failed protocol
    EXPECT_GT(calls.Count(GetParam()), 0u) << "a life does not come by here";
}

INSTANTIATE_TEST_SUITE_P(Each, ThrowingProtocol,
                         testing::Values("Start", "Stop", "ParamsUpdate", "ResetParams", "Params", "OnStartScan",
                                         "OnStopScan", "OnFactoryRestore", "Register", "Deregister",
                                         "InitPersistDomain", "LoadPersistDomain", "SavePersistDomain", "UpdateMetrics",
                                         "GetMetrics", "RemoveParamsHandler", "RemoveOutputsHandler",
                                         "RemoveStatusHandler"),
                         [](auto const& tested) { return std::string(tested.param); });

} // namespace ZuControl
