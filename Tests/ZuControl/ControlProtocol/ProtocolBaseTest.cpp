#include "ZuControl/ControlProtocol/ProtocolBase.h"

#include "Support/CallLog.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <thread>
#include <tuple>

namespace ZuControl::ControlProtocol
{

using Calls = ZuTest::CallLog::Calls;
using Lines = std::vector<ZuTest::LogLine>;
using Texts = std::vector<std::string>;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

constexpr ZuEthernetProtocol NUMBER{100};
constexpr char const* COMMANDS = "ZuControl::ControlProtocol::ProtocolBase::ProcessReceivedCommonCommands";
Refusal const NONE_SUCH{-999, ""};

/// Records the questions; answers at most one of them with yes.
class Deployment final : public IDeploymentQuery
{
public:
    explicit Deployment(ZuTest::CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    bool IsPhysicalSensor() override
    {
        return Answer("IsPhysicalSensor");
    }

    bool IsPhysicalBrackle() override
    {
        return Answer("IsPhysicalBrackle");
    }

    bool IsVirtualSensor() override
    {
        return Answer("IsVirtualSensor");
    }

    bool IsVirtualBrackle() override
    {
        return Answer("IsVirtualBrackle");
    }

    bool IsTavrinServiceApp() override
    {
        return Answer("IsTavrinServiceApp");
    }

    std::string yes;
    std::string throwing;

private:
    bool Answer(std::string const& question)
    {
        calls.Add(question);
        if (question == throwing)
        {
            throw std::runtime_error("no answer");
        }
        return question == yes;
    }

    ZuTest::CallLog& calls;
};

struct Metrics : public Zu::Properties::Structure
{
    Metrics() : Structure(true)
    {
        Register("controlDrops", controlDrops);
    }

    Zu::Properties::Value<uint64> controlDrops;
};

/// An output map that has two sources.
class Outputs final : public IProtocolOutput
{
public:
    void BeginLock() override
    {
    }

    void EndLock() override
    {
    }

    Zu::Params::Group const& OutputMap() const override
    {
        return group;
    }

    std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const override
    {
        return nullptr;
    }

    std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const override
    {
        return nullptr;
    }

    void Add(Zu::Params::Group const&) override
    {
    }

    void AddAll(Zu::Params::Group&) override
    {
    }

    void Remove(Zu::Params::Group const&) override
    {
    }

    uint64 Count() const override
    {
        return 2;
    }

    Zu::Params::Group const& At(uint64) const override
    {
        return group;
    }

    void Clear() override
    {
    }

    Texts DataSourceList() const override
    {
        return {"o1", "o2"};
    }

    void CompactId() override
    {
    }

    void UpdateId(Zu::Params::Group&) override
    {
    }

private:
    Zu::Params::Group group;
};

/// Makes the protected operations public.
class Protocol final : public ProtocolBase
{
public:
    Protocol(ControlProtocolEnviron const& environ, ZuTest::CallLog& sharedCalls)
        : ProtocolBase(NUMBER, "Test protocol", environ), calls(sharedCalls)
    {
    }

    using ProtocolBase::CheckControlDrops;
    using ProtocolBase::Describe;
    using ProtocolBase::GetCommandStatus;
    using ProtocolBase::Init;
    using ProtocolBase::IsDuplicateCommand;
    using ProtocolBase::OperationInProgress;
    using ProtocolBase::ProcessReceivedCommonCommands;
    using ProtocolBase::ScannerIsOptional;
    using ProtocolBase::SetOperationInProgress;

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
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

    void ProcessResultSets(void*) override
    {
        calls.Add("ProcessResultSets");
        if (during)
        {
            during();
        }
    }

    void NameVersion(char const* version)
    {
        paramsVersion = version;
    }

    Metrics metrics;
    std::function<void()> during;

private:
    ZuTest::CallLog& calls;
};

ControlRegisterCommandData Command(uint8 id, char const* text = "", uint16 requestId = 0)
{
    ControlRegisterCommandData command{};
    command.requestId = requestId;
    command.commandId = id;
    std::strncpy(command.text, text, sizeof command.text - 1);
    return command;
}

} // namespace

class ProtocolBaseTest : public testing::Test
{
protected:
    ProtocolBaseTest()
    {
        environ.operations = operations.get();
        environ.deployment = &deployment;
        environ.problems = &problems;
        Build();
    }

    void Build()
    {
        protocol = std::make_unique<Protocol>(environ, calls);
    }

    void Init(ProtocolInitParams params)
    {
        protocol->Init(params);
    }

    /// Runs a command to its end, expects success, and returns the calls that it caused.
    Calls Done(ControlRegisterCommandData const& command)
    {
        calls.Clear();
        auto const id = operations->AddOpEndEventHandler(NUMBER, [this](int) { calls.Add("end"); });
        protocol->ProcessReceivedCommonCommands(command);
        EXPECT_TRUE(calls.WaitFor("end"));
        operations->RemoveOpEndEventHandler(NUMBER, id);
        return calls.All();
    }

    void ExpectLine(char const* text)
    {
        Lines const lines = log.Lines();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(), ZuTest::Info(COMMANDS, text));
        log.Clear();
    }

    /// Whether the check reports a problem at this number of drops.
    bool Reports(uint64 drops)
    {
        protocol->metrics.controlDrops.Set(drops);
        protocol->CheckControlDrops();
        return problems.Count() > 0;
    }

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface system{calls};
    ZuTest::FakeScanEngineInterface engine{calls};
    Deployment deployment{calls};
    ZuCommon::ProblemsManager problems;
    std::unique_ptr<ControlProtocolOperations> operations = std::make_unique<ControlProtocolOperations>(system, engine);
    ControlProtocolEnviron environ;
    std::unique_ptr<Protocol> protocol;
    ZuTest::FakeScanResults results{calls};
    ZuTest::LogRecorder log;
};

TEST_F(ProtocolBaseTest, AsksWhetherThereIsAScannerUntilTheFirstYes)
{
    EXPECT_EQ(calls.All(), (Calls{"IsTavrinServiceApp", "IsVirtualBrackle", "IsPhysicalBrackle"}));
    EXPECT_FALSE(protocol->ScannerIsOptional());

    calls.Clear();
    deployment.yes = "IsVirtualBrackle";
    Build();

    EXPECT_EQ(calls.All(), (Calls{"IsTavrinServiceApp", "IsVirtualBrackle"}));
    EXPECT_TRUE(protocol->ScannerIsOptional());
}

TEST_F(ProtocolBaseTest, NeedsOperationsAndDeployment)
{
    environ.deployment = nullptr;
    EXPECT_EQ(RefusalOf([&] { Build(); }), (Refusal{-997, ""}));
    environ.deployment = &deployment;
    environ.operations = nullptr;
    EXPECT_EQ(RefusalOf([&] { Build(); }), (Refusal{-997, ""}));
}

TEST_F(ProtocolBaseTest, LeavesNoHandlerBehindWhenItsConstructionFails)
{
    deployment.throwing = "IsTavrinServiceApp";

    EXPECT_THROW(Protocol(environ, calls), std::runtime_error);

    EXPECT_EQ(Done(Command(CommandStart)), (Calls{"Start", "end"}));
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusDone);
}

TEST_F(ProtocolBaseTest, DescribesItselfByItsTypeNameAlone)
{
    ControlInfo info;
    info.SetDisplayName("kept");

    Protocol::Describe(info);

    EXPECT_STREQ(info.TypeName(), "protocolbase");
    EXPECT_STREQ(info.DisplayName(), "kept");
}

TEST_F(ProtocolBaseTest, RefusesWhatItWasNotHanded)
{
    EXPECT_EQ(RefusalOf([&] { protocol->Params(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->Outputs(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->OutputsActionTarget(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->GetMetrics(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssembly("a"); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssemblyActionTarget("a"); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssemblyList(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->CheckControlDrops(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->HardwareManager(); }), NONE_SUCH);
    EXPECT_EQ(RefusalOf([&] { protocol->OutputsUpdate(); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssemblyUpdate("a"); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { protocol->OnStartScan(); }), (Refusal{1, ""}));
    EXPECT_FALSE(protocol->HasProtocolOutput());
    EXPECT_FALSE(protocol->HasOutputsActionTarget());
    EXPECT_FALSE(protocol->HasRegisterAssemblyGroup());
    EXPECT_FALSE(protocol->HasRegisterAssemblyActionTarget());
    EXPECT_FALSE(protocol->HasRegisterAssembly("a"));
    EXPECT_EQ(protocol->DataSourceList(), Texts{});
    EXPECT_EQ(protocol->ActionTarget(), nullptr);
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolBaseTest, GivesWhatItWasHanded)
{
    Zu::Params::Group params;
    Outputs outputs;
    ProtocolRegisterAssemblyBase assembly;
    ProtocolRegisterAssemblyActionTarget target(assembly);
    ProtocolRegisterAssemblyGroup group;
    group.Add(assembly, target);
    Init({&params, &outputs, &target, &protocol->metrics, &group});

    EXPECT_EQ(&protocol->Params(), &params);
    EXPECT_EQ(&protocol->Outputs(), &outputs);
    EXPECT_EQ(&protocol->OutputsActionTarget(), &target);
    EXPECT_EQ(&protocol->GetMetrics(), &protocol->metrics);
    EXPECT_EQ(&protocol->RegisterAssembly("registerAssembly-0"), &assembly);
    EXPECT_EQ(&protocol->RegisterAssemblyActionTarget("registerAssembly-0"), &target);
    EXPECT_EQ(protocol->RegisterAssemblyList(), (Texts{"registerAssembly-0"}));
    EXPECT_TRUE(protocol->HasRegisterAssemblyActionTarget());
    EXPECT_STREQ(protocol->DisplayName(), "Test protocol");
    EXPECT_EQ(protocol->EthernetProtocolId(), NUMBER);

    Init({});
    EXPECT_EQ(RefusalOf([&] { protocol->Params(); }), NONE_SUCH);
}

TEST_F(ProtocolBaseTest, LetsAGroupThatIsEmptyWinOverTheOutputs)
{
    Outputs outputs;
    ProtocolRegisterAssemblyGroup group;
    Init({.outputs = &outputs});
    EXPECT_EQ(protocol->DataSourceList(), (Texts{"o1", "o2"}));

    Init({.outputs = &outputs, .registerAssemblyGroup = &group});

    EXPECT_EQ(protocol->DataSourceList(), Texts{});
    EXPECT_FALSE(protocol->HasRegisterAssemblyGroup());
    EXPECT_FALSE(protocol->HasRegisterAssembly("a"));
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssembly("a"); }),
              (Refusal{-999, "No register assembly has been added"})); // thrown by the group
    EXPECT_EQ(RefusalOf([&] { protocol->RegisterAssemblyActionTarget("a"); }), NONE_SUCH);
    EXPECT_EQ(protocol->RegisterAssemblyList(), Texts{});
}

TEST_F(ProtocolBaseTest, HasAVersionOfItsParametersThatADerivedClassMayChange)
{
    EXPECT_STREQ(protocol->ParamsVersion(), "1");
    protocol->NameVersion("7");
    EXPECT_STREQ(protocol->ParamsVersion(), "7");
}

TEST_F(ProtocolBaseTest, RunsTheHandlersOfItsEventsInOrder)
{
    Texts seen;
    auto firstId = protocol->AddParamsInternalUpdateEventHandler([&](bool on) { seen.push_back(on ? "p1" : "p0"); });
    protocol->AddParamsInternalUpdateEventHandler([&](bool) { seen.push_back("second"); });
    auto statusId = protocol->AddProtocolStatusUpdateEventHandler([&](ProtocolStatus) { seen.push_back("status"); });
    auto outputsId = protocol->AddOutputsInternalUpdateEventHandler([&](bool) { seen.push_back("outputs"); });

    protocol->NotifyParamsInternalUpdateEventHandler(true);
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
    protocol->NotifyOutputsInternalUpdateEventHandler(false);
    protocol->RemoveParamsInternalUpdateEventHandler(firstId);
    protocol->RemoveProtocolStatusUpdateEventHandler(statusId);
    protocol->RemoveOutputsInternalUpdateEventHandler(outputsId);
    protocol->NotifyParamsInternalUpdateEventHandler(false);
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
    protocol->NotifyOutputsInternalUpdateEventHandler(false);

    EXPECT_EQ(seen, (Texts{"p1", "second", "status", "outputs", "second"}));
}

TEST_F(ProtocolBaseTest, ReadsNoCommandAsDone)
{
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusNone);

    protocol->ProcessReceivedCommonCommands(Command(CommandNone));

    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusDone);
    EXPECT_FALSE(protocol->OperationInProgress());
    EXPECT_EQ(log.Lines(), (Lines{ZuTest::Info(COMMANDS, "NO COMMAND received. No processing done.")}));
}

TEST_F(ProtocolBaseTest, RefusesAnUnknownCommandWithoutAnException)
{
    protocol->ProcessReceivedCommonCommands(Command(9));

    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusFailed);
    EXPECT_EQ(protocol->CompletedOperationStatus(), CommandStatusFailed);
    EXPECT_EQ(log.Lines(), (Lines{ZuTest::Error(COMMANDS, "Command Id 9 is an invalid command")}));
}

TEST_F(ProtocolBaseTest, BeginsTheOperationOfEachCommand)
{
    EXPECT_EQ(Done(Command(CommandStart)), (Calls{"Start", "end"}));
    ExpectLine("Processing START command");
    EXPECT_EQ(Done(Command(CommandStop)), (Calls{"Stop", "end"}));
    ExpectLine("Processing STOP command");
    EXPECT_EQ(Done(Command(CommandClearAlign, "s")), (Calls{"ClearAlignment(s)", "end"}));
    ExpectLine("Processing CLEAR ALIGN command");
    EXPECT_EQ(Done(Command(CommandLoadJob, "job")), (Calls{"LoadJob(job)", "end"}));
    ExpectLine("Processing LOAD JOB command");
    EXPECT_EQ(Done(Command(CommandSoftwareTrigger, "s")), (Calls{"SoftwareTrigger(s)", "end"}));
    ExpectLine("Processing SOFTWARE TRIGGER command");
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusDone);
    EXPECT_FALSE(protocol->OperationInProgress());
}

TEST_F(ProtocolBaseTest, IsInProgressUntilAnAlignmentEnds)
{
    protocol->ProcessReceivedCommonCommands(Command(CommandAlign, "s"));

    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));
    ExpectLine("Processing ALIGN command");
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusInProgress);
    EXPECT_EQ(protocol->CompletedOperationStatus(), CommandStatusNone);
}

TEST_F(ProtocolBaseTest, StaysInProgressWhenACommandIsRefused)
{
    EXPECT_EQ(RefusalOf([&] { protocol->ProcessReceivedCommonCommands(Command(CommandLoadJob)); }),
              (Refusal{-997, "Empty job name for action 4"}));
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusInProgress);

    protocol->SetOperationInProgress(false);

    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusNone);
}

TEST_F(ProtocolBaseTest, PassesOnThatAnotherOperationIsInFlight)
{
    ZuTest::Latch go;
    system.on["Start"] = [&] { go.Wait(); };
    operations->AddOpEndEventHandler(NUMBER, [this](int) { calls.Add("end"); });
    protocol->ProcessReceivedCommonCommands(Command(CommandStart));

    EXPECT_EQ(RefusalOf([&] { protocol->ProcessReceivedCommonCommands(Command(CommandStop)); }),
              (Refusal{-976, "Protocol 100 operation 1 rejected because another operation is in progress"}));
    EXPECT_TRUE(protocol->OperationInProgress());

    go.Open();
    EXPECT_TRUE(calls.WaitFor("end"));
    EXPECT_EQ(protocol->GetCommandStatus(), CommandStatusDone);
}

TEST_F(ProtocolBaseTest, TellsSuccessFromEveryOtherEnd)
{
    for (auto const& [status, expected] :
         std::initializer_list<std::pair<int, ControlRegisterCommandStatus>>{{1, CommandStatusDone},
                                                                             {0, CommandStatusFailed},
                                                                             {1, CommandStatusDone},
                                                                             {-997, CommandStatusFailed},
                                                                             {2, CommandStatusFailed}})
    {
        protocol->SetOperationInProgress(true);
        protocol->OperationCompleted(status);
        EXPECT_EQ(protocol->GetCommandStatus(), expected) << status;
    }
}

TEST_F(ProtocolBaseTest, KnowsARepeatedCommand)
{
    EXPECT_TRUE(protocol->IsDuplicateCommand(Command(1, "a", 1), Command(1, "b", 2)));
    EXPECT_TRUE(protocol->IsDuplicateCommand(Command(2, "a"), Command(2, "b")));
    EXPECT_TRUE(protocol->IsDuplicateCommand(Command(9, "a"), Command(9, "b")));
    EXPECT_FALSE(protocol->IsDuplicateCommand(Command(1), Command(2)));
    for (uint8 const id : std::initializer_list<uint8>{3, 4, 5, 6})
    {
        EXPECT_FALSE(protocol->IsDuplicateCommand(Command(id, "a"), Command(id, "b")));
        ControlRegisterCommandData behindTheEnd = Command(id, "a", 7);
        behindTheEnd.text[10] = 'x';
        EXPECT_TRUE(protocol->IsDuplicateCommand(Command(id, "a"), behindTheEnd));
    }
}

TEST_F(ProtocolBaseTest, ReadsNoTextBeyondItsEnd)
{
    ControlRegisterCommandData endless = Command(CommandLoadJob);
    std::memset(endless.text, 'x', sizeof endless.text);

    EXPECT_TRUE(protocol->IsDuplicateCommand(endless, endless));
    EXPECT_EQ(Done(endless), (Calls{"LoadJob(" + std::string(63, 'x') + ")", "end"}));
}

TEST_F(ProtocolBaseTest, ReportsDropsUntilTheNextScanStart)
{
    Init({.metricsData = &protocol->metrics});
    protocol->metrics.controlDrops.Set(3);
    protocol->OnStartScan();

    EXPECT_TRUE(Reports(5));
    EXPECT_TRUE(Reports(5));
    ASSERT_EQ(problems.Count(), 1u);
    EXPECT_EQ(problems.List()[0].severity, 0);
    EXPECT_EQ(problems.List()[0].source, "ZuControl");
    EXPECT_EQ(problems.List()[0].text, "Control drops detected for Test protocol protocol.");
    EXPECT_TRUE(Reports(4)); // the baseline is still 3

    protocol->OnStartScan();

    EXPECT_FALSE(Reports(4));
}

TEST_F(ProtocolBaseTest, FindsItsDropsInAMetricToo)
{
    Zu::Properties::Structure record(true);
    Zu::Properties::Metric drops(Zu::Properties::Metric::Kind::COUNTER, "Drops");
    record.Register("controlDrops", drops);
    Init({.metricsData = &record});
    drops.Set(3);
    protocol->OnStartScan();

    protocol->CheckControlDrops();
    EXPECT_EQ(problems.Count(), 0u);
    drops.Add();
    protocol->CheckControlDrops();
    EXPECT_EQ(problems.Count(), 1u);
}

TEST_F(ProtocolBaseTest, LowersItsBaselineWithTheCount)
{
    Init({.metricsData = &protocol->metrics});
    protocol->metrics.controlDrops.Set(3);
    protocol->OnStartScan();

    EXPECT_FALSE(Reports(2));
    EXPECT_TRUE(Reports(3));
    EXPECT_FALSE(Reports(1));
}

TEST_F(ProtocolBaseTest, TellsItsClientsOnlyWhileItIsRegistered)
{
    calls.Clear();
    protocol->UpdateConnectedClientCount(1);
    protocol->RegisterControlScanResultsHandler(results);
    protocol->UpdateConnectedClientCount(2);
    protocol->DeregisterControlScanResultsHandler(results);
    protocol->UpdateConnectedClientCount(3);

    EXPECT_EQ(calls.All(), (Calls{"AddResultHandler(100)", "UpdateClientCount(100,2)", "RemoveResultHandler(100)"}));
}

TEST_F(ProtocolBaseTest, GetsResultsOfItsLatestRegistrationAlone)
{
    protocol->RegisterControlScanResultsHandler(results);
    protocol->RegisterControlScanResultsHandler(results); // the first handler can then no longer be removed

    results.ProcessResultSet(nullptr);

    EXPECT_EQ(calls.Count("ProcessResultSets"), 1u);
}

TEST_F(ProtocolBaseTest, GetsNoResultsBehindItsGate)
{
    protocol->RegisterControlScanResultsHandler(results);
    protocol->CloseResultHandlerGate();
    results.ProcessResultSet(nullptr);
    EXPECT_EQ(calls.Count("ProcessResultSets"), 0u);

    protocol->RegisterControlScanResultsHandler(results);
    results.ProcessResultSet(nullptr);
    EXPECT_EQ(calls.Count("ProcessResultSets"), 1u);

    protocol.reset(); // its handler is still registered with the fan-out
    results.ProcessResultSet(nullptr);
    EXPECT_EQ(calls.Count("ProcessResultSets"), 1u);
}

TEST_F(ProtocolBaseTest, WaitsForARunningBatchWhenItsGateCloses)
{
    ZuTest::Latch inside;
    ZuTest::Latch go;
    protocol->during = [&] {
        inside.Open();
        go.Wait();
        calls.Add("batch ends");
    };
    protocol->RegisterControlScanResultsHandler(results);
    std::thread dispatcher([&] { results.ProcessResultSet(nullptr); });
    ASSERT_TRUE(inside.Wait());
    std::thread closer([&] {
        go.Open();
        protocol->CloseResultHandlerGate();
        calls.Add("closed");
    });
    closer.join();
    dispatcher.join();

    Calls const all = calls.All();
    EXPECT_EQ(Calls(all.end() - 2, all.end()), (Calls{"batch ends", "closed"}));
}

TEST_F(ProtocolBaseTest, GetsNoEndOfAnOperationOnceItIsGone)
{
    ZuTest::Latch go;
    system.on["Start"] = [&] { go.Wait(); };
    protocol->ProcessReceivedCommonCommands(Command(CommandStart));
    auto const id = operations->AddOpEndEventHandler(NUMBER, [this](int) { calls.Add("end"); });

    protocol.reset();
    go.Open();

    EXPECT_TRUE(calls.WaitFor("end")); // the end was delivered, and the destroyed protocol was not called
    operations->RemoveOpEndEventHandler(NUMBER, id);
}

TEST_F(ProtocolBaseTest, DoesWithoutAScannerEverywhereButOnSensors)
{
    for (auto const& [yes, expected, asked] : std::initializer_list<std::tuple<char const*, bool, Calls>>{
             {"IsTavrinServiceApp", true, {"IsTavrinServiceApp"}},
             {"IsPhysicalBrackle", true, {"IsTavrinServiceApp", "IsVirtualBrackle", "IsPhysicalBrackle"}},
             {"IsPhysicalSensor", false, {"IsTavrinServiceApp", "IsVirtualBrackle", "IsPhysicalBrackle"}},
             {"IsVirtualSensor", false, {"IsTavrinServiceApp", "IsVirtualBrackle", "IsPhysicalBrackle"}}})
    {
        calls.Clear();
        deployment.yes = yes;
        Build();

        EXPECT_EQ(protocol->ScannerIsOptional(), expected) << yes;
        EXPECT_EQ(calls.All(), asked) << yes;
    }
}

TEST_F(ProtocolBaseTest, ReportsDropsAgainThatCameAfterAFallOfTheCount)
{
    Init({.metricsData = &protocol->metrics});
    protocol->metrics.controlDrops.Set(3);
    protocol->OnStartScan();

    EXPECT_TRUE(Reports(5));
    EXPECT_TRUE(Reports(4));
    EXPECT_FALSE(Reports(2)); // the baseline decreases with the count
    EXPECT_TRUE(Reports(5));
    EXPECT_EQ(problems.Count(), 1u);
}

TEST_F(ProtocolBaseTest, DoesNothingWhereADerivedClassNeedNotDoAnything)
{
    calls.Clear();
    nlohmann::json document = "kept";

    protocol->ProtocolBase::ProcessResultSets(nullptr);
    protocol->BeginUpdateParams("key");
    protocol->EndUpdateParams();
    protocol->ConfigureDefaultRegisterAssembly();
    protocol->OnStopScan();
    protocol->OnFactoryRestore();
    protocol->InitPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    protocol->LoadPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    protocol->SavePersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);

    EXPECT_EQ(document, "kept");
    EXPECT_EQ(calls.All(), Calls{});
    EXPECT_EQ(log.Lines(), Lines{});
}

} // namespace ZuControl::ControlProtocol
