#include "ZuControl/Control/ControlInstance.h"

#include "Support/FakeHost.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeSystemInterface.h"
#include "Support/FakeUpdateGate.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ResultSets.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Calls = ZuTest::CallLog::Calls;

class ControlInstanceTest : public testing::Test
{
protected:
    void Build(int32 number = 3)
    {
        info.SetTypeName("type").SetDisplayName("A type");
        protocol = std::make_shared<ZuTest::FakeProtocol>(calls, number);
        ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};
        instance = std::make_unique<ControlInstance>(params);
        calls.Clear();
    }

    void FailOn(std::string const& call, int32 status, std::string text)
    {
        protocol->on[call] = [status, text] { ZU_THROW(status, "%s", text.c_str()); };
    }

    void ExpectProblem(std::string const& text)
    {
        auto const list = problems.List();
        ASSERT_EQ(list.size(), 1u);
        EXPECT_EQ(list[0].severity, 1);
        EXPECT_EQ(list[0].source, "Protocol");
        EXPECT_EQ(list[0].text, text);
    }

    ZuTest::CallLog calls;
    ControlInfo info;
    ZuTest::FakeUpdateGate gate{calls};
    ZuTest::FakeScanResults scanResults{calls};
    ZuCommon::ProblemsManager problems;
    std::shared_ptr<ZuTest::FakeProtocol> protocol;
    std::unique_ptr<ControlInstance> instance;
};

TEST_F(ControlInstanceTest, BeginsDisabledAndStopped)
{
    Build();

    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(&instance->Info(), &info);
    EXPECT_EQ(std::string(instance->TypeName()), "type");
    EXPECT_EQ(instance->EthernetProtocolId(), ZuEthernetProtocol{3});
    instance->Enable(false);
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlInstanceTest, StartsBeforeItRegistersAndLeavesStartingStanding)
{
    Build();

    instance->Enable(true);
    instance->Enable(true);

    EXPECT_EQ(calls.All(), (Calls{"Start", "Register", "AddResultHandler(3)"}));
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::Starting);
}

TEST_F(ControlInstanceTest, DeregistersBeforeItStopsAndLeavesStoppingStanding)
{
    Build();
    instance->Enable(true);
    calls.Clear();

    instance->Enable(false);

    EXPECT_EQ(calls.All(), (Calls{"Deregister", "RemoveResultHandler(3)", "Stop"}));
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::Stopping);
}

TEST_F(ControlInstanceTest, LeavesTheResultHandlerWithAProblemOnRecord)
{
    Build();
    instance->Enable(true);
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    calls.Clear();

    instance->Enable(false);

    EXPECT_EQ(calls.All(), (Calls{"Stop"}));
    EXPECT_FALSE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, TurnsAFailedStartIntoAProblemAndAnExceptionWithTheSameStatusAndText)
{
    Build();
    FailOn("Start", -5, "100% x");

    try
    {
        instance->Enable(true);
        ADD_FAILURE();
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -5);
        EXPECT_EQ(std::string(exception.what()), "100% x");
        EXPECT_THROW(std::rethrow_if_nested(exception), Zu::Exception);
    }
    EXPECT_EQ(calls.All(), (Calls{"Start"}));
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::FailedToStart);
    ExpectProblem("100% x");
}

TEST_F(ControlInstanceTest, ClearsTheProblemOfAnEarlierStartWithOneThatSucceeds)
{
    Build();
    FailOn("Start", -5, "x");
    EXPECT_THROW(instance->Enable(true), Zu::Exception);

    protocol->on.clear();
    instance->Enable(true);

    EXPECT_EQ(problems.Count(), 0u);
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, StaysEnabledAfterAFailedStopThoughTheResultHandlerIsGone)
{
    Build();
    instance->Enable(true);
    FailOn("Stop", -6, "y");
    calls.Clear();

    EXPECT_EQ(RefusalOf([&] { instance->Enable(false); }), (Refusal{-6, "y"}));

    EXPECT_EQ(calls.All(), (Calls{"Deregister", "RemoveResultHandler(3)", "Stop"}));
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::FailedToStop);
    ExpectProblem("y");
}

TEST_F(ControlInstanceTest, DoesNotCatchWhatIsNoExceptionOfTheSystem)
{
    Build();
    protocol->on["Start"] = [] { throw std::runtime_error("foreign"); };

    EXPECT_THROW(instance->Enable(true), std::runtime_error);

    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::Starting);
    EXPECT_EQ(problems.Count(), 0u);
    EXPECT_FALSE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, KeepsWhichOperationFailedUntilItSucceeds)
{
    Build();
    protocol->on["ParamsUpdate"] = [] { throw 42; };
    protocol->on["Start"] = [] { throw std::runtime_error("foreign"); };
    EXPECT_THROW(instance->ParamsUpdate(), int);
    EXPECT_THROW(instance->Enable(true), std::runtime_error);
    EXPECT_EQ(instance->Faults().Operations(), (std::vector<std::string>{"ParamsUpdate", "Start"}));

    protocol->on.erase("ParamsUpdate");
    instance->ParamsUpdate();
    EXPECT_EQ(instance->Faults().Operations(), (std::vector<std::string>{"Start"}));
    protocol->on.erase("Start");
    instance->Enable(true);

    EXPECT_EQ(instance->Faults().Operations(), std::vector<std::string>{});
}

TEST_F(ControlInstanceTest, TakesARefusalForNoFault)
{
    Build();
    FailOn("Start", Zu::Status::BUSY, "the port is taken");
    FailOn("OnStartScan", Zu::Status::BUSY, "not now");

    EXPECT_EQ(RefusalOf([&] { instance->Enable(true); }), (Refusal{-976, "the port is taken"}));
    EXPECT_EQ(instance->Faults().Operations(), std::vector<std::string>{});

    EXPECT_EQ(RefusalOf([&] { instance->OnStartScan(); }), (Refusal{-976, "not now"})); // here BUSY is a fault
    EXPECT_EQ(instance->Faults().Operations(), (std::vector<std::string>{"OnStartScan"}));
}

TEST_F(ControlInstanceTest, OnlyStoresTheStatusesThatAreNoFailure)
{
    Build();

    for (auto const status :
         {ProtocolStatus::Running, ProtocolStatus::Stopped, ProtocolStatus::Starting, ProtocolStatus::Stopping})
    {
        protocol->NotifyProtocolStatusUpdateEventHandler(status);

        EXPECT_EQ(instance->GetProtocolStatus(), status);
        EXPECT_EQ(problems.Count(), 0u);
    }
}

TEST_F(ControlInstanceTest, ReportsAFailureThatTheProtocolTells)
{
    Build();

    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    ExpectProblem("Fake service failed to start.");
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStop);

    ExpectProblem("Fake service failed to stop.");
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::FailedToStop);
}

TEST_F(ControlInstanceTest, TellsTheUserThatAProtocolCannotBeStoppedInsteadOfAProblem)
{
    Build(5);
    ZuTest::LogRecorder const log;

    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStop);

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::UserWarning(
                               "Fake protocol cannot be stopped once started. It will continue to run until the "
                               "device is restarted")}));
    EXPECT_EQ(problems.Count(), 0u);
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::FailedToStop);
}

TEST_F(ControlInstanceTest, BracketsEveryUpdateAndFiresBeforeItCloses)
{
    Build();
    instance->AddParamsUpdatedEventHandler(
        [this](std::string const& type, bool notify) { calls.Add("params " + type + (notify ? " 1" : " 0")); });
    instance->AddOutputsUpdatedEventHandler(
        [this](std::string const& type, bool notify) { calls.Add("outputs " + type + (notify ? " 1" : " 0")); });
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [this](std::string const& type, std::string const& id) { calls.Add("assembly " + type + " " + id); });

    EXPECT_EQ(&instance->BeginUpdateParameters(), &protocol->params);
    instance->EndUpdateParameters();
    instance->BeginUpdateOutputsMap();
    instance->EndUpdateOutputsMap();
    instance->BeginUpdateRegisterAssembly();
    instance->EndUpdateRegisterAssembly("r");

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdate(true)", "Params", "params type 1", "EndUpdate", "BeginUpdate(true)",
                                  "outputs type 1", "EndUpdate", "BeginUpdate(true)", "assembly type r", "EndUpdate"}));
}

TEST_F(ControlInstanceTest, LeavesTheGateOpenWhenAHandlerThrows)
{
    Build();
    instance->AddParamsUpdatedEventHandler([](std::string const&, bool) { throw std::runtime_error("handler"); });

    instance->BeginUpdateParameters();
    EXPECT_THROW(instance->EndUpdateParameters(), std::runtime_error);

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdate(true)", "Params"}));
}

TEST_F(ControlInstanceTest, LeavesTheGateOpenWhenThereAreNoParameters)
{
    Build();
    protocol->on["Params"] = [] { ZU_THROW(Zu::Status::NOT_FOUND); };

    EXPECT_EQ(RefusalOf([&] { instance->BeginUpdateParameters(); }), (Refusal{-999, ""}));

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdate(true)", "Params"}));
}

TEST_F(ControlInstanceTest, PassesInternalUpdatesOnAsTheyAreAndLeavesTheGateAlone)
{
    Build();
    instance->AddParamsUpdatedEventHandler(
        [this](std::string const& type, bool notify) { calls.Add("params " + type + (notify ? " 1" : " 0")); });
    instance->AddOutputsUpdatedEventHandler(
        [this](std::string const& type, bool notify) { calls.Add("outputs " + type + (notify ? " 1" : " 0")); });

    protocol->NotifyParamsInternalUpdateEventHandler(false);
    protocol->NotifyParamsInternalUpdateEventHandler(true);
    protocol->NotifyOutputsInternalUpdateEventHandler(true);

    EXPECT_EQ(calls.All(), (Calls{"params type 0", "params type 1", "outputs type 1"}));
}

TEST_F(ControlInstanceTest, TreatsHandlersAsEveryEventDoes)
{
    Build();
    EXPECT_FALSE(instance->AddParamsUpdatedEventHandler({}).second);
    EXPECT_FALSE(instance->AddOutputsUpdatedEventHandler({}).second);
    EXPECT_FALSE(instance->AddRegisterAssemblyUpdatedEventHandler({}).second);
    auto const params = instance->AddParamsUpdatedEventHandler([](std::string const&, bool) { ADD_FAILURE(); });
    auto const outputs = instance->AddOutputsUpdatedEventHandler([](std::string const&, bool) { ADD_FAILURE(); });
    auto const assembly =
        instance->AddRegisterAssemblyUpdatedEventHandler([](std::string const&, std::string const&) { ADD_FAILURE(); });

    instance->RemoveParamsUpdatedEventHandler(params);
    instance->RemoveOutputsUpdatedEventHandler(outputs);
    instance->RemoveRegisterAssemblyUpdatedEventHandler(assembly);
    instance->EndUpdateParameters();
    instance->EndUpdateOutputsMap();
    instance->EndUpdateRegisterAssembly("r");

    EXPECT_EQ(calls.Count("EndUpdate"), 3u);
}

TEST_F(ControlInstanceTest, AnswersForAProtocolWithoutOutputsAndAssemblies)
{
    Build();

    instance->OutputsMapBeginLock();
    instance->OutputsMapEndLock();
    instance->RegisterAssemblyBeginLock("a");
    instance->RegisterAssemblyEndLock("a");
    instance->RegisterAssemblyUpdate("a");
    EXPECT_EQ(calls.All(), Calls{});

    EXPECT_EQ(RefusalOf([&] { instance->OutputsMap(); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { instance->RegisterAssembly("a"); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { instance->RegisterAssemblyList(); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { instance->RegisterAssemblyActionTarget("a"); }), (Refusal{-999, ""}));
    EXPECT_FALSE(instance->HasRegisterAssembly("a"));
    EXPECT_FALSE(instance->HasProtocolOutput());
    EXPECT_FALSE(instance->HasOutputsActionTarget());
}

TEST_F(ControlInstanceTest, TellsTheProtocolOfItsOutputsBeforeItFindsThatThereAreNone)
{
    Build();

    EXPECT_EQ(RefusalOf([&] { instance->OutputsUpdate(); }), (Refusal{-999, ""}));

    EXPECT_EQ(calls.All(), (Calls{"OutputsUpdate"}));
}

TEST_F(ControlInstanceTest, TellsTheFanOutWhatTheProtocolWantsNow)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;

    instance->OutputsUpdate();
    instance->RegisterAssemblyUpdate("a");

    EXPECT_EQ(calls.All(), (Calls{"OutputsUpdate", "UpdateOutputMap(3,x,y)", "RegisterAssemblyUpdate(a)",
                                  "UpdateOutputMap(3,x,y)"}));
}

TEST_F(ControlInstanceTest, LocksWhatTheProtocolHas)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;

    instance->OutputsMapBeginLock();
    EXPECT_EQ(&instance->OutputsMap(), &protocol->output.map);
    instance->OutputsMapEndLock();
    instance->RegisterAssemblyBeginLock("a");
    instance->RegisterAssemblyEndLock("a");

    EXPECT_EQ(calls.All(), (Calls{"Outputs.BeginLock", "Outputs.EndLock", "RegisterAssembly(a)",
                                  "RegisterAssembly.BeginLock", "RegisterAssembly(a)", "RegisterAssembly.EndLock"}));
}

TEST_F(ControlInstanceTest, ForwardsWhatIsTheProtocolsOwn)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;
    nlohmann::json document;

    instance->ParamsUpdate();
    instance->OnStartScan();
    instance->OnStopScan();
    instance->OnFactoryRestore();
    instance->InitPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    instance->LoadPersistDomain(ZuCommon::PersistDomain::PROTOCOL, nlohmann::json(5));
    instance->SavePersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);

    EXPECT_EQ(calls.All(), (Calls{"ParamsUpdate", "OnStartScan", "OnStopScan", "OnFactoryRestore", "InitPersistDomain",
                                  "LoadPersistDomain", "SavePersistDomain"}));
    EXPECT_EQ(document, nlohmann::json(5));
    EXPECT_EQ(std::string(instance->ParamsVersion()), "7");
    EXPECT_EQ(&instance->Params(), &protocol->params);
    EXPECT_EQ(instance->ActionTarget(), &protocol->target);
    EXPECT_EQ(&instance->OutputsActionTarget(), &protocol->target);
    EXPECT_EQ(&instance->RegisterAssemblyActionTarget("a"), &protocol->target);
    EXPECT_EQ(&instance->RegisterAssembly("a"), &protocol->assembly);
    EXPECT_EQ(instance->RegisterAssemblyList(), (std::vector<std::string>{"a"}));
    EXPECT_TRUE(instance->HasRegisterAssemblyActionTarget());
}

TEST_F(ControlInstanceTest, ResetsEverythingInOrderAfterItStopped)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;
    instance->AddParamsUpdatedEventHandler([](std::string const&, bool) { ADD_FAILURE() << "a reset is no update"; });
    instance->Enable(true);
    calls.Clear();

    instance->ResetInstance(false, IControlInstance::DataToResetAll);

    EXPECT_EQ(calls.All(), (Calls{"Deregister", "RemoveResultHandler(3)", "Stop", "ResetParams", "Outputs.Clear",
                                  "OutputsUpdate", "UpdateOutputMap(3,x,y)", "ConfigureDefaultRegisterAssembly"}));
    EXPECT_FALSE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, ResetsOneKindOfDataAndLeavesTheRest)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;
    instance->Enable(true);
    calls.Clear();

    instance->ResetInstance(true, IControlInstance::DataToResetRegisterAssemblies);
    instance->ResetInstance(true, IControlInstance::DataToResetParams);
    instance->ResetInstance(true, IControlInstance::DataToResetOutputs);

    EXPECT_EQ(calls.All(), (Calls{"ConfigureDefaultRegisterAssembly", "ResetParams", "Outputs.Clear", "OutputsUpdate",
                                  "UpdateOutputMap(3,x,y)"}));
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, EndsAResetWithOutputsThatTheProtocolCannotTakeOver)
{
    Build();
    protocol->hasOutput = true;
    protocol->hasGroup = true;
    protocol->on["OutputsUpdate"] = [] { ZU_THROW(Zu::Status::NOT_SUPPORTED); };

    EXPECT_EQ(RefusalOf([&] { instance->ResetInstance(true, IControlInstance::DataToResetAll); }), (Refusal{-996, ""}));

    EXPECT_EQ(calls.All(), (Calls{"ResetParams", "Outputs.Clear", "OutputsUpdate"}));
}

TEST_F(ControlInstanceTest, ShowsMetricsThroughAnAdapterOfItsOwn)
{
    Build();

    EXPECT_NE(&instance->MetricsKeeper(), static_cast<ZuCommon::IMetricsKeeper*>(protocol.get()));
    EXPECT_EQ(&instance->MetricsKeeper().UpdateMetrics(), &protocol->metrics);
    EXPECT_EQ(&instance->MetricsSource().GetMetrics(), &protocol->metrics);
}

TEST_F(ControlInstanceTest, AddsItsHandlersInOrderAndRemovesThemInAnother)
{
    Build();
    instance.reset();
    EXPECT_EQ(calls.All(), (Calls{"RemoveStatusHandler", "RemoveParamsHandler", "RemoveOutputsHandler"}));
    calls.Clear();
    ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};

    instance = std::make_unique<ControlInstance>(params);

    EXPECT_EQ(calls.All(), (Calls{"AddParamsHandler", "AddStatusHandler", "AddOutputsHandler"}));
}

TEST_F(ControlInstanceTest, LogsWhatTheProtocolThrowsAtItsEndAndDoesNotStopIt)
{
    Build();
    instance->Enable(true);
    FailOn("RemoveStatusHandler", -7, "no");
    calls.Clear();
    ZuTest::LogRecorder const log;

    instance.reset();

    EXPECT_EQ(calls.All(), (Calls{"RemoveStatusHandler"}));
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Error("ZuControl::ControlInstance::~ControlInstance",
                                                                     "Exception thrown in destructor"),
                                                       ZuTest::CaughtEntry(-7, "no"), ZuTest::BackTrace()}));
    protocol->on.clear();
}

TEST_F(ControlInstanceTest, LeavesNoHandlerBehindWhenItCannotBeBuilt)
{
    info.SetTypeName("type");
    protocol = std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    FailOn("AddOutputsHandler", -8, "full");
    ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};

    EXPECT_EQ(RefusalOf([&] { ControlInstance{params}; }), (Refusal{-8, "full"}));

    protocol->NotifyParamsInternalUpdateEventHandler(true); // a handler left behind would call the destroyed instance
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    EXPECT_EQ(problems.Count(), 0u);
}

namespace
{

/// Stores results in a member and ignores Stop. A result that arrives after destruction is a write into freed memory,
/// which a sanitizer reports.
class ListeningProtocol final : public ControlProtocol::ProtocolBase
{
public:
    ListeningProtocol(ZuTest::CallLog& sharedCalls, ControlProtocol::ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuEthernetProtocol{9}, "Listening", environ), calls(sharedCalls)
    {
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    void Start() override
    {
    }

    void Stop() override
    {
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

    void ProcessResultSets(void* resultSets) override
    {
        if (failsOverResults)
        {
            throw std::runtime_error("not well");
        }
        received.push_back(ZuTest::BatchOf(resultSets).size());
        calls.Add("received");
    }

    std::atomic<bool> failsOverResults{false};

private:
    ZuTest::CallLog& calls;
    std::vector<std::size_t> received;
    Zu::Properties::Structure metrics{true};
};

} // namespace

class ControlInstanceDelivery : public ControlInstanceTest
{
protected:
    ControlInstanceDelivery()
    {
        environ.operations = &operations;
        environ.deployment = &deployment;
        environ.problems = &problems;
    }

    ~ControlInstanceDelivery() override
    {
        instance.reset(); // before `operations`, as in the module
    }

    void BuildListening()
    {
        info.SetTypeName("listening");
        auto const made = std::make_shared<ListeningProtocol>(calls, environ);
        listening = made;
        ControlInstanceParams params{&info, &gate, &results, &problems, made};
        instance = std::make_unique<ControlInstance>(params);
        instance->Enable(true);
        results.UpdateOutputMap(ZuEthernetProtocol{9}, {"a"});
        results.UpdateClientCount(ZuEthernetProtocol{9}, 1);
    }

    /// Lets the protocol throw over a result, which ends the thread of its dispatcher. Later results no longer throw.
    void KillDispatcher()
    {
        listening.lock()->failsOverResults = true;
        Publish();
        auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!IsDispatcherDead() && std::chrono::steady_clock::now() < latest)
        {
            std::this_thread::yield();
        }
        ASSERT_TRUE(IsDispatcherDead());
        listening.lock()->failsOverResults = false;
    }

    bool IsDispatcherDead()
    {
        return results.CountersOf(ZuEthernetProtocol{9})->hasDied;
    }

    void EnableAnew()
    {
        instance->Enable(false);
        instance->Enable(true);
    }

    void Publish()
    {
        results.ProcessResultSet(ZuTest::MakeSet({"a"}).get());
    }

    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngines{calls};
    ZuTest::FakeDeployment deployment;
    ControlProtocolOperations operations{systemInterface, scanEngines};
    ControlProtocol::ControlProtocolEnviron environ;
    ControlScanResults results{nullptr, nullptr};
    std::weak_ptr<ListeningProtocol> listening;
};

TEST_F(ControlInstanceDelivery, EndsBeforeAnEnabledProtocolGoes)
{
    for (int i = 0; i < 10; ++i)
    {
        calls.Clear();
        BuildListening();
        std::atomic<bool> publish{true};
        std::thread publishing([&] {
            while (publish)
            {
                Publish();
            }
        });
        EXPECT_TRUE(calls.WaitFor("received"));

        instance.reset(); // its handler is still registered with the fan-out

        EXPECT_TRUE(listening.expired());
        std::size_t const received = calls.Count("received");
        auto const marker = results.AddResultHandler([this](void*) { calls.Add("marker"); }, ZuEthernetProtocol{9});
        EXPECT_TRUE(calls.WaitFor("marker"));
        EXPECT_EQ(calls.Count("received"), received);
        publish = false;
        publishing.join();
        results.RemoveResultHandler(marker);
    }
}

TEST_F(ControlInstanceDelivery, BeginsAnewWhenAProtocolIsEnabledAgainAfterItFailedOverAResult)
{
    BuildListening();
    KillDispatcher();

    EnableAnew();

    EXPECT_FALSE(IsDispatcherDead());
    results.UpdateClientCount(ZuEthernetProtocol{9}, 1);
    Publish();
    EXPECT_TRUE(calls.WaitFor("received"));
}

TEST_F(ControlInstanceDelivery, StaysDeadUntilTheModuleGoesWhenAProtocolWithAProblemOnRecordFailedOverAResult)
{
    BuildListening();
    listening.lock()->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    KillDispatcher();

    for (int i = 0; i < 3; ++i) // the first handler stays registered, and with it the dispatcher
    {
        EnableAnew();
        EXPECT_TRUE(IsDispatcherDead());
    }

    EXPECT_EQ(problems.Count(), 0u);
}

TEST_F(ControlInstanceDelivery, ReachesAProtocolOnceThatWasEnabledAgainWithAProblemOnRecord)
{
    BuildListening();
    listening.lock()->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    instance->Enable(false); // leaves its handler registered
    instance->Enable(true);
    calls.Clear();
    auto const marker = results.AddResultHandler([this](void*) { calls.Add("marker"); }, ZuEthernetProtocol{9});

    Publish();

    ASSERT_TRUE(calls.WaitFor("marker")); // called after both handlers
    EXPECT_EQ(calls.Count("received"), 1u);
    instance->Enable(false);
    results.RemoveResultHandler(marker);
}

TEST_F(ControlInstanceTest, NestsTheExceptionOfAFailedStart)
{
    Build();
    FailOn("Start", -5, "x");
    ZuTest::LogRecorder const log;

    try
    {
        instance->Enable(true);
        ADD_FAILURE();
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(RefusalOf([&] { std::rethrow_if_nested(exception); }), (Refusal{-5, "x"}));
    }
    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{}); // the final catcher logs it
}

TEST_F(ControlInstanceTest, TellsHowManyStartsHaveFailedAndWhyTheLastOneDid)
{
    Build();
    EXPECT_EQ(instance->FailedStarts().count, 0u);
    EXPECT_EQ(instance->FailedStarts().typeName, "type");
    struct
    {
        char const* failing;
        std::function<void()> failure;
        char const* reason;
    } const cases[] = {
        {"Start", [] { ZU_THROW(-5, "the port is taken"); }, "the port is taken"},
        {"Start", [] { ZU_THROW(-980); }, "status -980"},
        {"Start", [] { throw std::runtime_error("foreign"); }, "foreign"},
        {"Start", [] { throw 7; }, "exception of an unknown type"},
        {"Register", [] { ZU_THROW(-977, "no dispatcher"); }, "no dispatcher"},
    };
    uint64 count = 0;
    for (auto const& tested : cases)
    {
        protocol->on = {{tested.failing, tested.failure}};

        EXPECT_ANY_THROW(instance->Enable(true));

        EXPECT_EQ(instance->FailedStarts().count, ++count);
        EXPECT_EQ(instance->FailedStarts().lastReason, tested.reason);
    }
    protocol->on.clear();
    instance->Enable(true);
    EXPECT_EQ(instance->FailedStarts().count, count);
}

TEST_F(ControlInstanceTest, LeavesTheGateOpenWhenAHandlerOfAnyUpdateThrows)
{
    Build();
    instance->AddOutputsUpdatedEventHandler([](std::string const&, bool) { throw std::runtime_error("outputs"); });
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [](std::string const&, std::string const&) { throw std::runtime_error("assembly"); });

    instance->BeginUpdateOutputsMap();
    EXPECT_THROW(instance->EndUpdateOutputsMap(), std::runtime_error);
    instance->BeginUpdateRegisterAssembly();
    EXPECT_THROW(instance->EndUpdateRegisterAssembly("r"), std::runtime_error);

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdate(true)", "BeginUpdate(true)"}));
}

TEST_F(ControlInstanceTest, IsNotEnabledWhenTheRegistrationForResultsFails)
{
    Build();
    FailOn("Register", -977, "no dispatcher");

    EXPECT_EQ(RefusalOf([this] { instance->Enable(true); }), (Refusal{-977, "no dispatcher"}));

    EXPECT_EQ(calls.All(), (Calls{"Start", "Register"}));
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(instance->GetProtocolStatus(), ProtocolStatus::Starting);
    EXPECT_EQ(problems.Count(), 0u);
}

} // namespace ZuControl
