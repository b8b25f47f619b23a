#include "ZuControl/Control/ControlManager.h"

#include "Support/FakeHost.h"
#include "Support/FakePersistStore.h"
#include "Support/FakePlugin.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeScanner.h"
#include "Support/FakeSensor.h"
#include "Support/FakeUpdateGate.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuScan/ScanEngines.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Calls = ZuTest::CallLog::Calls;
using ZuCommon::PersistDomain;

class ControlManagerTest : public testing::Test
{
protected:
    ControlManagerTest()
    {
        environ.deployment = &deployment;
        environ.persistRegistry = &persistRegistry;
        environ.problems = &problems;
        environ.updateGate = &gate;
        environ.scanStartStopEvent = &startStop;
        environ.factoryRestoreEvent = &restore;
        environ.protocolOption = 42;
    }

    /// Offers a type; its protocol records its calls as "name.Call".
    void Offer(char const* name, ControlInfo::SupportedEnvironmentList const& environments = {})
    {
        plugin->Offer(ControlInfo().SetTypeName(name).SetSupportedEnvironment(environments),
                      [this, name](ControlProtocol::ControlProtocolEnviron const& given) {
                          protocolEnviron = given;
                          auto const protocol =
                              std::make_shared<ZuTest::FakeProtocol>(calls, ++lastNumber, std::string(name) + ".");
                          protocols[name] = protocol.get();
                          return protocol;
                      });
    }

    void Build()
    {
        ZuTest::AddLib(plugins, {plugin});
        registry = std::make_unique<ControlRegistry>(plugins);
        log.Clear();
        manager = std::make_unique<ControlManager>(*registry, scanResults, environ);
    }

    void BuildTwo()
    {
        Offer("a");
        Offer("b");
        Build();
        calls.Clear();
        log.Clear();
    }

    void NotePersistenceLoad()
    {
        manager->AddPersistenceLoadEventHandler([this](IControlManager::PersistenceLoadOpState state) {
            calls.Add("load event " + std::to_string(static_cast<int>(state)));
        });
    }

    static constexpr char const* CREATE = "ZuControl::ControlManager::Create";

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::FakeDeployment deployment;
    ZuTest::FakePersistRegistry persistRegistry{calls};
    ZuTest::FakePersistStore store;
    ZuTest::FakeUpdateGate gate{calls};
    ZuTest::FakeScanResults scanResults{calls};
    ZuCommon::ProblemsManager problems;
    Zu::Event<bool> startStop;
    Zu::Event<> restore;
    ControlModuleEnviron environ;
    std::shared_ptr<ZuTest::FakePlugin> plugin = std::make_shared<ZuTest::FakePlugin>();
    ZuPlugin::PluginManager plugins;
    std::unique_ptr<ControlRegistry> registry;
    std::map<std::string, ZuTest::FakeProtocol*> protocols;
    ControlProtocol::ControlProtocolEnviron protocolEnviron;
    std::unique_ptr<ControlManager> manager;

private:
    int32 lastNumber = 100;
};

TEST_F(ControlManagerTest, BuildsAnInstanceOfEachTypeInOrder)
{
    Offer("b");
    Offer("a");

    Build();

    EXPECT_EQ(manager->Component(), "ControlManager");
    EXPECT_EQ(manager->List(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(std::string(manager->GetInstance("a").TypeName()), "a");
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlManager::CreateAll",
                                                     "Creating all control protocol instances."),
                                        ZuTest::Info(CREATE, "Creating control protocol instance: \"a\"."),
                                        ZuTest::Info(CREATE, "Creating control protocol instance: \"b\".")}));
    EXPECT_EQ(RefusalOf([this] { manager->GetInstance("c%s"); }),
              (Refusal{-999, "Control protocol type not recognized: 'c%s'."}));
}

TEST_F(ControlManagerTest, HandsEachProtocolWhatItReachesTheSystemBy)
{
    Offer("a");

    Build();

    EXPECT_NE(protocolEnviron.operations, nullptr);
    EXPECT_NE(protocolEnviron.resourceAdaptor, nullptr);
    EXPECT_NE(protocolEnviron.dataCache, nullptr);
    EXPECT_EQ(protocolEnviron.deployment, &deployment);
    EXPECT_EQ(protocolEnviron.problems, &problems);
    EXPECT_EQ(protocolEnviron.protocolOption, 42u);
}

TEST_F(ControlManagerTest, AsksTheSensorForItsInputsAndOutputsWhenItIsTold)
{
    ZuTest::CallLog commands;
    ZuTest::FakeSensor sensor(commands);
    sensor.on["queryIoOutputCount"] = [](Zu::Params::Group const&) {
        auto result = std::make_shared<ZuStdScanners::ZucSensor::QueryIoOutputCountResult>();
        result->count.Set(3);
        return result;
    };
    ZuTest::FakeScanner scanner;
    ZuScan::Internal::ScanEngineManager scanEngines;
    scanEngines.AddEngine("engine").AddScanner("scanner", scanner, nullptr).AddSensor("sensor", sensor);
    environ.scanEngines = &scanEngines;
    Offer("a");
    Build();
    manager->GetInstance("a").Enable(true);
    startStop.Fire(true);

    IControlHardwareManager& hardware = *protocolEnviron.hardwareManager;
    EXPECT_EQ(commands.All(), Calls{}); // only FindHardware queries the sensor
    EXPECT_TRUE(hardware.SupportedHardwareInterfaces().empty());

    manager->FindHardware();

    EXPECT_EQ(commands.All().size(), 4u);
    EXPECT_EQ(hardware.GetInterfaceCount(IControlHardware::ZuHardwareIOType::DIGITAL_INPUT), 3u);
}

struct DeploymentCase
{
    char const* name;
    bool ZuTest::FakeDeployment::*first;
    bool ZuTest::FakeDeployment::*second; // true as well, but not queried after `first`
    ControlInfo::SupportedEnvironmentList environments;
    Calls asked;
};

class ControlManagerDeployment : public ControlManagerTest, public testing::WithParamInterface<DeploymentCase>
{
};

TEST_P(ControlManagerDeployment, AsksInOrderAndTakesTheFirstTrueAnswerAlsoWhenItSaysNo)
{
    deployment.*GetParam().first = true;
    deployment.*GetParam().second = true;
    Offer("no", GetParam().environments);

    Build();

    EXPECT_TRUE(manager->List().empty());
    EXPECT_EQ(deployment.asked.All(), GetParam().asked);
    EXPECT_EQ(
        log.Lines(),
        (std::vector{ZuTest::Info("ZuControl::ControlManager::CreateAll", "Creating all control protocol instances."),
                     ZuTest::Info(CREATE, "Creating control protocol instance: \"no\"."),
                     ZuTest::Info(CREATE, "ZuControl::ControlManager::Create: control protocol \"no\" is "
                                          "not supported in this environment")}));
    EXPECT_EQ(RefusalOf([this] { manager->GetInstance("no"); }),
              (Refusal{-999, "Control protocol type not recognized: 'no'."}));
    EXPECT_TRUE(protocols.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, ControlManagerDeployment,
                         testing::Values(DeploymentCase{"PhysicalSensor",
                                                        &ZuTest::FakeDeployment::physicalSensor,
                                                        &ZuTest::FakeDeployment::virtualSensor,
                                                        {false, true, true, true, true},
                                                        {"physical sensor"}},
                                         DeploymentCase{"VirtualSensor",
                                                        &ZuTest::FakeDeployment::virtualSensor,
                                                        &ZuTest::FakeDeployment::tavrinServiceApp,
                                                        {true, true, false, true, true},
                                                        {"physical sensor", "virtual sensor"}},
                                         DeploymentCase{"ServiceApp",
                                                        &ZuTest::FakeDeployment::tavrinServiceApp,
                                                        &ZuTest::FakeDeployment::physicalBrackle,
                                                        {true, true, true, true, false},
                                                        {"physical sensor", "virtual sensor", "service app"}},
                                         DeploymentCase{
                                             "PhysicalBrackle",
                                             &ZuTest::FakeDeployment::physicalBrackle,
                                             &ZuTest::FakeDeployment::virtualBrackle,
                                             {true, false, true, true, true},
                                             {"physical sensor", "virtual sensor", "service app", "physical brackle"}},
                                         DeploymentCase{"VirtualBrackle",
                                                        &ZuTest::FakeDeployment::virtualBrackle,
                                                        &ZuTest::FakeDeployment::virtualBrackle,
                                                        {true, true, true, false, true},
                                                        {"physical sensor", "virtual sensor", "service app",
                                                         "physical brackle", "virtual brackle"}}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ControlManagerTest, SupportsEveryTypeOnASystemOfNoKnownKind)
{
    Offer("a", {false, false, false, false, false});

    Build();

    EXPECT_EQ(manager->List(), (std::vector<std::string>{"a"}));
}

struct FailingFactory
{
    char const* name;
    ZuTest::FakeFactory::Make make;
    int32 status;
    char const* text;
};

class ControlManagerFactory : public ControlManagerTest, public testing::WithParamInterface<FailingFactory>
{
};

TEST_P(ControlManagerFactory, EndsTheConstructionWithATypeThatCannotBeMade)
{
    Offer("a");
    plugin->Offer("x", GetParam().make);
    Offer("z");

    EXPECT_EQ(RefusalOf([this] { Build(); }), (Refusal{GetParam().status, GetParam().text}));

    EXPECT_EQ(
        log.LinesWithShortTraces(),
        (std::vector{
            ZuTest::Info("ZuControl::ControlManager::CreateAll", "Creating all control protocol instances."),
            ZuTest::Info(CREATE, "Creating control protocol instance: \"a\"."),
            ZuTest::Info(CREATE, "Creating control protocol instance: \"x\"."),
            ZuTest::Error(CREATE, std::string("Failed to create control protocol: \"x\" (") + GetParam().text + ")"),
            ZuTest::CaughtEntry(GetParam().status, GetParam().text), ZuTest::BackTrace()}));
    EXPECT_TRUE(startStop.Empty());
    EXPECT_TRUE(restore.Empty());
    EXPECT_EQ(calls.Count("Register(ControlManager,'')"), 0u);
    EXPECT_EQ(calls.Count("a.~"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Every, ControlManagerFactory,
                         testing::Values(FailingFactory{"ThatThrows",
                                                        [](auto const&) -> std::shared_ptr<ControlProtocol::IProtocol> {
                                                            ZU_THROW(-5, "no 100%% protocol");
                                                        },
                                                        -5, "no 100% protocol"},
                                         FailingFactory{"ThatMakesNothing", [](auto const&) { return nullptr; }, -999,
                                                        "Failed to create protocol x"},
                                         FailingFactory{"ThatIsMissing", {}, -999, "Failed to create protocol x"}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ControlManagerTest, RegistersWithoutANameAndGoesInOrder)
{
    Offer("a");
    Build();
    EXPECT_EQ(calls.Count("Register(ControlManager,'')"), 1u);
    EXPECT_EQ(startStop.Count(), 1u);
    EXPECT_EQ(restore.Count(), 1u);
    calls.Clear();

    manager.reset();

    EXPECT_EQ(calls.All(), (Calls{"Deregister(17)", "a.RemoveStatusHandler", "a.RemoveParamsHandler",
                                  "a.RemoveOutputsHandler", "a.~"}));
    EXPECT_TRUE(startStop.Empty());
    EXPECT_TRUE(restore.Empty());
}

TEST_F(ControlManagerTest, GoesOnWithItsEndWhenAStepFails)
{
    Build();
    persistRegistry.failing = true;
    log.Clear();

    manager.reset();

    EXPECT_TRUE(startStop.Empty());
    EXPECT_TRUE(restore.Empty());
    EXPECT_EQ(
        log.LinesWithShortTraces(),
        (std::vector{ZuTest::Error("ZuControl::ControlManager::~ControlManager", "Exception thrown in destructor"),
                     ZuTest::CaughtEntry(-999, "not registered"), ZuTest::BackTrace()}));
}

TEST_F(ControlManagerTest, LivesWithoutRegistryAndEvents)
{
    environ.persistRegistry = nullptr;
    environ.scanStartStopEvent = nullptr;
    environ.factoryRestoreEvent = nullptr;
    BuildTwo();

    manager->GetInstance("a").EndUpdateParameters();
    manager->LoadPersistDomain(PersistDomain::JOB, store);
    manager.reset();

    EXPECT_EQ(calls.Count("MarkModified(2)"), 0u);
}

TEST_F(ControlManagerTest, MarksTheJobForUpdatesThatAreToBeNoted)
{
    BuildTwo();

    protocols["a"]->NotifyParamsInternalUpdateEventHandler(false);
    protocols["a"]->NotifyOutputsInternalUpdateEventHandler(false);
    EXPECT_EQ(calls.All(), Calls{});
    protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);
    protocols["b"]->NotifyOutputsInternalUpdateEventHandler(true);
    manager->GetInstance("b").EndUpdateRegisterAssembly("r");

    EXPECT_EQ(calls.All(), (Calls{"MarkModified(2)", "MarkModified(2)", "MarkModified(2)", "EndUpdate"}));
}

TEST_F(ControlManagerTest, MarksTheJobBeforeAnybodyElseHearsOfAnUpdate)
{
    BuildTwo();
    manager->GetInstance("a").AddParamsUpdatedEventHandler([this](std::string const&, bool) { calls.Add("heard"); });

    manager->GetInstance("a").EndUpdateParameters();

    EXPECT_EQ(calls.All(), (Calls{"MarkModified(2)", "heard", "EndUpdate"}));
}

TEST_F(ControlManagerTest, TellsEveryInstanceOfTheHostsEvents)
{
    BuildTwo();

    startStop.Fire(true);
    startStop.Fire(false);
    restore.Fire();

    EXPECT_EQ(calls.All(), (Calls{"a.OnStartScan", "b.OnStartScan", "a.OnStopScan", "b.OnStopScan",
                                  "a.OnFactoryRestore", "b.OnFactoryRestore"}));
}

TEST_F(ControlManagerTest, CatchesNothingThatAnInstanceThrowsAtTheHostsEvents)
{
    BuildTwo();
    protocols["a"]->on["OnStartScan"] = [] { throw std::runtime_error("x"); };
    protocols["a"]->on["OnFactoryRestore"] = [] { throw std::runtime_error("y"); };

    EXPECT_THROW(startStop.Fire(true), std::runtime_error);
    EXPECT_THROW(restore.Fire(), std::runtime_error);

    EXPECT_EQ(calls.All(), (Calls{"a.OnStartScan", "a.OnFactoryRestore"}));
}

TEST_F(ControlManagerTest, InitialisesTheJobBetweenItsEventsAndCountsChangesThere)
{
    BuildTwo();
    NotePersistenceLoad();
    protocols["a"]->on["ResetParams"] = [this] { protocols["a"]->NotifyParamsInternalUpdateEventHandler(true); };

    manager->InitPersistDomain(PersistDomain::JOB, store);

    EXPECT_EQ(calls.All(),
              (Calls{"load event 0", "a.ResetParams", "MarkModified(2)", "b.ResetParams", "load event 1"}));
}

TEST_F(ControlManagerTest, InitialisesTheNextInstanceWhenOneFails)
{
    BuildTwo();
    protocols["a"]->on["ResetParams"] = [] { ZU_THROW(-5, "x"); };

    manager->InitPersistDomain(PersistDomain::JOB, store);

    EXPECT_EQ(calls.Count("b.ResetParams"), 1u);
    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error("ZuControl::ControlManager::InitPersistDomain", "EXCEPTION THROWN: "),
                           ZuTest::CaughtEntry(-5, "x"), ZuTest::BackTrace()}));
}

TEST_F(ControlManagerTest, InitialisesAProtocolsOwnDomainWithoutAnEvent)
{
    BuildTwo();
    NotePersistenceLoad();

    manager->InitPersistDomain(PersistDomain::PROTOCOL, store);
    manager->InitPersistDomain(PersistDomain{3}, store);

    EXPECT_EQ(calls.All(), (Calls{"a.InitPersistDomain", "b.InitPersistDomain"}));
    EXPECT_TRUE(store.written.empty());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlManagerTest, LeavesInstancesAsTheyAreWhenNothingIsStored)
{
    BuildTwo();
    NotePersistenceLoad();

    manager->LoadPersistDomain(PersistDomain::JOB, store);
    manager->LoadPersistDomain(PersistDomain::PROTOCOL, store);
    manager->SavePersistDomain(PersistDomain::PROTOCOL, store);

    EXPECT_EQ(calls.All(), (Calls{"load event 0", "load event 1", "a.SavePersistDomain", "b.SavePersistDomain"}));
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlManagerTest, MarksTheJobOnceBehindALoadInWhichInstancesFailed)
{
    BuildTwo();
    NotePersistenceLoad();
    store.files = {{"/controls/a/config.json", "{}"}, {"/controls/b/config.json", "nonsense"}};

    manager->LoadPersistDomain(PersistDomain::JOB, store);

    EXPECT_EQ(calls.All(), (Calls{"load event 0", "load event 1", "MarkModified(2)"}));
    auto const line = ZuTest::Error("ZuControl::ControlManager::LoadPersistDomain", "EXCEPTION THROWN: ");
    auto const lines = log.LinesWithShortTraces();
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[1], line);
    EXPECT_EQ(lines[2], ZuTest::CaughtEntry(-984, "No saved information found in service a configuration file."));
    EXPECT_EQ(lines[4], line);
    EXPECT_TRUE(lines[5].text.starts_with("exception: [json.exception.parse_error.101]")) << lines[5];
}

TEST_F(ControlManagerTest, NeverMarksTheJobForAProtocolsOwnDomain)
{
    BuildTwo();
    NotePersistenceLoad();
    store.files = {{"/controls/a/config.json", "nonsense"}, {"/controls/b/config.json", "7"}};

    manager->LoadPersistDomain(PersistDomain::PROTOCOL, store);

    EXPECT_EQ(calls.All(), Calls{"b.LoadPersistDomain"});
    EXPECT_EQ(log.LinesWithoutTraces().size(), 1u);
}

TEST_F(ControlManagerTest, DoesNotTakeWhatALoadDoesForAChangeOfTheJob)
{
    BuildTwo();
    manager->AddPersistenceLoadEventHandler([this](IControlManager::PersistenceLoadOpState) {
        calls.Add("event");
        protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);
        manager->GetInstance("a").EndUpdateRegisterAssembly("r");
    });

    manager->LoadPersistDomain(PersistDomain::JOB, store);
    EXPECT_EQ(calls.All(), (Calls{"event", "EndUpdate", "event", "EndUpdate"}));
    protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);

    EXPECT_EQ(calls.Count("MarkModified(2)"), 1u);
}

TEST_F(ControlManagerTest, MarksNothingAfterALoadThatAHandlerEndedUntilOneHasRunToItsEnd)
{
    BuildTwo();
    auto const id = manager->AddPersistenceLoadEventHandler(
        [](IControlManager::PersistenceLoadOpState) { throw std::runtime_error("handler"); });

    EXPECT_THROW(manager->LoadPersistDomain(PersistDomain::JOB, store), std::runtime_error);
    protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(calls.All(), Calls{});

    manager->RemovePersistenceLoadEventHandler(id);
    manager->LoadPersistDomain(PersistDomain::JOB, store);
    protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(calls.All(), (Calls{"MarkModified(2)"}));
}

TEST_F(ControlManagerTest, SavesEveryInstanceAndGoesOnWhenOneFails)
{
    BuildTwo();
    NotePersistenceLoad();
    protocols["a"]->on["Params"] = [] { ZU_THROW(-5, "x"); };

    manager->SavePersistDomain(PersistDomain::JOB, store);

    EXPECT_EQ(store.written, (std::vector<std::string>{"/controls/b/config.json"}));
    EXPECT_EQ(calls.All(), (Calls{"a.Params", "b.Params"}));
    auto const lines = log.LinesWithShortTraces();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[lines.size() - 3],
              ZuTest::Error("ZuControl::ControlManager::SavePersistDomain", "EXCEPTION THROWN: "));
    EXPECT_EQ(lines[lines.size() - 2], ZuTest::CaughtEntry(-5, "Error saving parameters for service a"));
}

TEST_F(ControlManagerTest, TreatsLoadHandlersAsEveryEventDoes)
{
    Build();

    EXPECT_FALSE(manager->AddPersistenceLoadEventHandler({}).second);
    manager->RemovePersistenceLoadEventHandler({});
    NotePersistenceLoad();
    calls.Clear();
    manager->LoadPersistDomain(PersistDomain::JOB, store);

    EXPECT_TRUE(manager->List().empty());
    EXPECT_EQ(calls.All(), (Calls{"load event 0", "load event 1"}));
}

TEST_F(ControlManagerTest, EndsTheConstructionWithAnInstanceThatCannotBeBuilt)
{
    Offer("a");
    plugin->Offer("x", [this](auto const&) {
        auto const protocol = std::make_shared<ZuTest::FakeProtocol>(calls, 1, "x.");
        protocol->on["AddOutputsHandler"] = [] { ZU_THROW(-8, "full"); };
        return protocol;
    });
    Offer("z");

    EXPECT_EQ(RefusalOf([this] { Build(); }), (Refusal{-8, "full"}));

    auto const lines = log.LinesWithShortTraces();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[3], ZuTest::Error(CREATE, "Failed to create control protocol: \"x\" (full)"));
    EXPECT_EQ(lines[4], ZuTest::CaughtEntry(-8, "full"));
    EXPECT_EQ(calls.Count("x.~") + calls.Count("a.~"), 2u);
}

TEST_F(ControlManagerTest, PassesOnTheVeryExceptionOfAFactory)
{
    plugin->Offer("x", [](auto const&) -> std::shared_ptr<ControlProtocol::IProtocol> {
        throw std::out_of_range("no such model");
    });

    EXPECT_THROW(Build(), std::out_of_range);

    auto const lines = log.LinesWithShortTraces();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[2], ZuTest::Error(CREATE, "Failed to create control protocol: \"x\" (no such model)"));
    EXPECT_EQ(lines[3], ZuTest::CaughtForeign("no such model"));
}

TEST_F(ControlManagerTest, LeavesNothingBehindWhenTheHostRefusesIt)
{
    class Refusing final : public IPersistRegistry
    {
    public:
        uint64 Register(ZuCommon::IPersistHandler& /*handler*/, std::string const& /*name*/) override
        {
            ZU_THROW(-987, "one is there already");
        }

        void Deregister(uint64 /*id*/) override
        {
            ADD_FAILURE() << "it was never registered";
        }

        void MarkModified(ZuCommon::IPersistHandler& /*handler*/, ZuCommon::PersistDomain /*domain*/,
                          uint64 /*reserved*/) override
        {
        }
    };
    Refusing refusing;
    environ.persistRegistry = &refusing;
    Offer("a");

    EXPECT_EQ(RefusalOf([this] { Build(); }), (Refusal{-987, "one is there already"}));

    EXPECT_TRUE(startStop.Empty());
    EXPECT_TRUE(restore.Empty());
    EXPECT_EQ(calls.Count("a.~"), 1u);
}

TEST_F(ControlManagerTest, MarksNothingEitherWhenAHandlerThrewBehindALoad)
{
    BuildTwo();
    auto const id = manager->AddPersistenceLoadEventHandler([](IControlManager::PersistenceLoadOpState state) {
        if (state == IControlManager::PersistenceLoadOpState::End)
        {
            throw std::runtime_error("handler");
        }
    });

    EXPECT_THROW(manager->LoadPersistDomain(PersistDomain::JOB, store), std::runtime_error);
    manager->RemovePersistenceLoadEventHandler(id);
    protocols["a"]->NotifyParamsInternalUpdateEventHandler(true);

    EXPECT_EQ(calls.Count("MarkModified(2)"), 0u);
}

} // namespace ZuControl
