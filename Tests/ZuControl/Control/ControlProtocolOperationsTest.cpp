#include "ZuControl/Control/ControlProtocolOperations.h"

#include "Support/FailAtEachAllocation.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/NoNewThreads.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <pthread.h>
#include <thread>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Calls = ZuTest::CallLog::Calls;

constexpr ZuEthernetProtocol PROTOCOL_7{7};
constexpr ZuEthernetProtocol PROTOCOL_8{8};
constexpr uint64 PATIENCE_USEC = 30'000'000;

class ControlProtocolOperationsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        operations = std::make_unique<ControlProtocolOperations>(systemInterface, scanEngines);
        ListenTo(PROTOCOL_7);
    }

    /// Records an end as "7 ended 1".
    Zu::Event<int>::CallbackId ListenTo(ZuEthernetProtocol protocol)
    {
        std::string const number = std::to_string(static_cast<int32>(protocol));
        return operations->AddOpEndEventHandler(
            protocol, [this, number](int status) { calls.Add(number + " ended " + std::to_string(status)); });
    }

    void RunTestAction(int action)
    {
        operations->RunSynchronousOp(PROTOCOL_7, static_cast<ControlProtocolOperations::ActionId>(action), {});
    }

    void QueueEnd(ZuEthernetProtocol protocol, int status)
    {
        operations->NotifyOperationEnd(protocol, status, "");
    }

    /// Clears `runningFlag`, which ends the dispatcher thread, and calls its thread function on the calling thread.
    /// Returns the result of that call.
    int DispatchUntilTheEnd()
    {
        operations->runningFlag = false;
        return ControlProtocolOperations::DispatcherThreadFx(operations.get());
    }

    /// Ends the dispatcher and starts it again. With an empty queue it ends only when its wait times out.
    void LetTheDispatcherTimeOut()
    {
        operations->runningFlag = false;
        ASSERT_EQ(wThread_Join(operations->thread, PATIENCE_USEC, nullptr), Zu::Status::SUCCESS);
        operations->runningFlag = true;
        ASSERT_EQ(wThread_Start(operations->thread, &ControlProtocolOperations::DispatcherThreadFx, operations.get()),
                  Zu::Status::SUCCESS);
    }

    void FreeTheFlag()
    {
        operations->OperationFinish();
    }

    bool IsInFlight() const
    {
        return operations->operationFlag.load() == 1;
    }

    /// Waits until everything queued before the call is delivered.
    void WaitForTheRoadToBeEmpty()
    {
        Zu::Event<int>::CallbackId const id = ListenTo(ZuEthernetProtocol{999});
        QueueEnd(ZuEthernetProtocol{999}, ++marker);
        ASSERT_TRUE(calls.WaitFor("999 ended " + std::to_string(marker)));
        operations->RemoveOpEndEventHandler(ZuEthernetProtocol{999}, id);
    }

    void CompleteAlignment(ZuScan::AlignCompletionStatus status = ZuScan::AlignCompletionStatus::SUCCESS)
    {
        scanEngines.event.Fire(status);
    }

    static constexpr char const* TASK = "ZuControl::ControlProtocolOperations::RunSynchronousOp";
    static constexpr char const* DISPATCHER = "ZuControl::ControlProtocolOperations::DispatcherThreadFx";

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngines{calls};
    std::unique_ptr<ControlProtocolOperations> operations;

private:
    int marker = 0;
};

struct SimpleOperation
{
    char const* name;
    std::function<void(ControlProtocolOperations&)> begin;
    char const* call;
    int action;
    char const* title;
};

class ControlProtocolOperationsSimple : public ControlProtocolOperationsTest,
                                        public testing::WithParamInterface<SimpleOperation>
{
};

TEST_P(ControlProtocolOperationsSimple, RunsOnTheWorkerAndTellsItsEnd)
{
    GetParam().begin(*operations);

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_EQ(calls.All(), (Calls{GetParam().call, "7 ended 1"}));
    EXPECT_FALSE(IsInFlight());
}

TEST_P(ControlProtocolOperationsSimple, EndsWithStatusZeroWhateverItThrows)
{
    ZuTest::LogRecorder const log;
    auto const fail = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "no"); };
    systemInterface.on[GetParam().call] = fail;
    scanEngines.on[GetParam().call] = fail;

    GetParam().begin(*operations);

    ASSERT_TRUE(calls.WaitFor("7 ended 0"));
    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error(TASK, "Exception processing action id " + std::to_string(GetParam().action)),
                           ZuTest::CaughtEntry(-998, "no"), ZuTest::BackTrace()}));
}

TEST_P(ControlProtocolOperationsSimple, LeavesTheTurnToTheNextWhereItHadNoMemory)
{
    uint64 const allocations =
        ZuTest::FailAtEachAllocation([this] { calls.Clear(); }, [this] { GetParam().begin(*operations); },
                                     [this](bool isRefused) {
                                         EXPECT_TRUE(isRefused || calls.WaitFor("7 ended 1"));
                                         EXPECT_FALSE(IsInFlight());
                                         EXPECT_FALSE(operations->OperationUnderWay().has_value());
                                         EXPECT_TRUE(!isRefused || calls.All().empty());
                                     });

    EXPECT_GT(allocations, 0u);
}

TEST_P(ControlProtocolOperationsSimple, IsToldAsUnderWayUntilItHasEnded)
{
    ZuTest::Latch release;
    scanEngines.on[GetParam().call] = systemInterface.on[GetParam().call] = [&release] { release.Wait(); };
    EXPECT_FALSE(operations->OperationUnderWay().has_value());
    uint64 const beginUsec = wTime_NowUsec();

    GetParam().begin(*operations);

    auto const underWay = operations->OperationUnderWay();
    release.Open();
    ASSERT_TRUE(underWay.has_value());
    EXPECT_EQ(underWay->protocol, PROTOCOL_7);
    EXPECT_STREQ(underWay->name, GetParam().title);
    EXPECT_GE(underWay->sinceUsec, beginUsec);
    EXPECT_LE(underWay->sinceUsec, wTime_NowUsec());
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_FALSE(operations->OperationUnderWay().has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Every, ControlProtocolOperationsSimple,
    testing::Values(SimpleOperation{"StartScan", [](auto& o) { o.StartScan(PROTOCOL_7); }, "Start", 0, "scan start"},
                    SimpleOperation{"StopScan", [](auto& o) { o.StopScan(PROTOCOL_7); }, "Stop", 1, "scan stop"},
                    SimpleOperation{"ClearAlignment", [](auto& o) { o.ClearAlignment(PROTOCOL_7, "s"); },
                                    "ClearAlignment(s)", 3, "removal of the alignment"},
                    SimpleOperation{"LoadJob", [](auto& o) { o.LoadJob(PROTOCOL_7, "job"); }, "LoadJob(job)", 4,
                                    "job load"},
                    SimpleOperation{"SoftwareTrigger", [](auto& o) { o.SoftwareTrigger(PROTOCOL_7, ""); },
                                    "SoftwareTrigger()", 5, "software trigger"},
                    SimpleOperation{"SetNextIpConfig",
                                    [](auto& o) {
                                        wIpConfig config;
                                        config.address = {192, 168, 1, 10};
                                        o.SetNextIpConfig(PROTOCOL_7, config);
                                    },
                                    "SetNextIpConfig(10)", 6, "change of the IP configuration"},
                    SimpleOperation{"FactoryRestore", [](auto& o) { o.FactoryRestore(PROTOCOL_7); }, "FactoryRestore",
                                    7, "factory restore"},
                    SimpleOperation{"Restart", [](auto& o) { o.Restart(PROTOCOL_7); }, "Restart", 8, "restart"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ControlProtocolOperationsTest, CountsHowOperationsEnded)
{
    ZuTest::Latch release;
    systemInterface.on["Start"] = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "no"); };
    systemInterface.on["Stop"] = [&] { release.Wait(); };

    operations->StartScan(PROTOCOL_7);
    ASSERT_TRUE(calls.WaitFor("7 ended 0"));
    operations->StopScan(PROTOCOL_7);
    EXPECT_EQ(RefusalOf([this] { operations->Restart(PROTOCOL_8); }).status, -976);
    release.Open();
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));

    EXPECT_EQ(operations->SucceededCount(), 1u);
    EXPECT_EQ(operations->FailedCount(), 1u);
    EXPECT_EQ(operations->RefusedCount(), 1u);
}

TEST_F(ControlProtocolOperationsTest, TellsEveryEndWithItsArgumentAndEachRefusal)
{
    ZuTest::CallLog ends;
    auto const subscription = operations->SubscribeToEveryEnd([&](ControlProtocolOperations::Ended const& end) {
        ends.Add(std::to_string(static_cast<int32>(end.protocol)) + " " + end.name + " '" + end.argument + "' " +
                 std::to_string(end.status));
    });
    ZuTest::Latch release;
    systemInterface.on["Start"] = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "no"); };
    systemInterface.on["Stop"] = [&] { release.Wait(); };

    operations->LoadJob(PROTOCOL_8, "a job");
    ASSERT_TRUE(ends.WaitFor("8 job load 'a job' 1"));
    WaitForTheRoadToBeEmpty();
    operations->StartScan(PROTOCOL_7);
    ASSERT_TRUE(ends.WaitFor("7 scan start '' 0"));
    WaitForTheRoadToBeEmpty();
    operations->StopScan(PROTOCOL_7);
    EXPECT_EQ(RefusalOf([this] { operations->LoadJob(PROTOCOL_8, "b"); }).status, Zu::Status::BUSY);
    release.Open();
    ASSERT_TRUE(ends.WaitFor("7 scan stop '' 1"));

    EXPECT_EQ(ends.All(),
              (Calls{"8 job load 'a job' 1", "7 scan start '' 0", "8 job load 'b' -976", "7 scan stop '' 1"}));
}

TEST_F(ControlProtocolOperationsTest, TellsTheClientOfEachEndAndOfEachRefusal)
{
    ZuTest::CallLog ends;
    auto const subscription = operations->SubscribeToEveryEnd([&](ControlProtocolOperations::Ended const& end) {
        ends.Add(std::string(end.name) + " of '" + end.origin.address + "' as " + ZuCommon::RoleName(end.origin.role));
    });
    ZuTest::Latch release;
    systemInterface.on["Stop"] = [&] { release.Wait(); };
    CommandOrigin const first{"10.0.0.7", ZuCommon::Role::OPERATOR};
    CommandOrigin const second{"10.0.0.8", ZuCommon::Role::ENGINEER};
    {
        CommandOriginScope const outer(first);
        {
            CommandOriginScope const inner(second);
            operations->StartScan(PROTOCOL_7);
            ASSERT_TRUE(ends.WaitFor("scan start of '10.0.0.8' as engineer"));
            WaitForTheRoadToBeEmpty();
        }
        operations->StopScan(PROTOCOL_7); // ends after the scope
    }
    {
        CommandOriginScope const scope(second);
        EXPECT_EQ(RefusalOf([this] { operations->Restart(PROTOCOL_8); }).status, Zu::Status::BUSY);
    }
    release.Open();
    ASSERT_TRUE(ends.WaitFor("scan stop of '10.0.0.7' as operator"));
    WaitForTheRoadToBeEmpty();
    operations->Restart(PROTOCOL_8);
    ASSERT_TRUE(ends.WaitFor("restart of '' as none"));

    EXPECT_EQ(ends.All(), (Calls{"scan start of '10.0.0.8' as engineer", "restart of '10.0.0.8' as engineer",
                                 "scan stop of '10.0.0.7' as operator", "restart of '' as none"}));
}

TEST_F(ControlProtocolOperationsTest, TellsBeginAndCauseOfAFailure)
{
    std::vector<ControlProtocolOperations::Ended> ends;
    ZuTest::Latch hasEnded;
    auto const subscription = operations->SubscribeToEveryEnd([&](ControlProtocolOperations::Ended const& end) {
        ends.push_back(end);
        hasEnded.Open();
    });
    systemInterface.on["Start"] = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "there is no sensor"); };
    uint64 const beginUsec = wTime_NowUsec();

    operations->StartScan(HOST_PROTOCOL);

    hasEnded.Wait();
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends[0].protocol, HOST_PROTOCOL);
    EXPECT_EQ(ends[0].status, Zu::Status::FAILURE);
    EXPECT_EQ(ends[0].cause.status, Zu::Status::NOT_OFFERED);
    EXPECT_EQ(ends[0].cause.text, "there is no sensor");
    EXPECT_GE(ends[0].sinceUsec, beginUsec);
    EXPECT_LE(ends[0].sinceUsec, wTime_NowUsec());
}

TEST_F(ControlProtocolOperationsTest, LetsAListenerToEveryEndBeginTheNextOperation)
{
    std::string refusal = "not asked";
    auto const subscription = operations->SubscribeToEveryEnd([&](ControlProtocolOperations::Ended const& end) {
        if (end.protocol == PROTOCOL_8)
        {
            refusal = RefusalOf([this] { operations->StopScan(PROTOCOL_7); }).text;
        }
    });

    operations->StartScan(PROTOCOL_8);

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_EQ(refusal, Refusal().text);
}

TEST_F(ControlProtocolOperationsTest, TellsAnAlignmentAsUnderWayUntilTheScannerReportsIt)
{
    operations->Alignment(PROTOCOL_7, "s");
    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));

    EXPECT_THROW(operations->Restart(PROTOCOL_8), Zu::Exception); // refused: the alignment stays under way

    auto const underWay = operations->OperationUnderWay();
    ASSERT_TRUE(underWay.has_value());
    EXPECT_EQ(underWay->protocol, PROTOCOL_7);
    EXPECT_STREQ(underWay->name, "alignment");
    CompleteAlignment();
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_FALSE(operations->OperationUnderWay().has_value());
}

TEST_F(ControlProtocolOperationsTest, RefusesASecondOperationAndLeavesTheFirstAlone)
{
    ZuTest::Latch release;
    ListenTo(PROTOCOL_8);
    systemInterface.on["Stop"] = [&] { release.Wait(); };
    operations->StopScan(PROTOCOL_7);

    EXPECT_EQ(RefusalOf([this] { operations->StartScan(PROTOCOL_8); }),
              (Refusal{-976, "Protocol 8 operation 0 rejected because another operation is in progress"}));
    release.Open();

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    WaitForTheRoadToBeEmpty();
    EXPECT_EQ(calls.Count("8 ended 1") + calls.Count("8 ended 0"), 0u);
    EXPECT_EQ(calls.Count("Start"), 0u);
}

TEST_F(ControlProtocolOperationsTest, LetsOneOfTwoWinThatBeginAtOnce)
{
    ZuTest::Latch release;
    for (auto const protocol : {PROTOCOL_7, PROTOCOL_8})
    {
        operations->AddOpEndEventHandler(protocol, [this](int) { calls.Add("ended"); });
    }
    systemInterface.on["Start"] = [&] { release.Wait(); };
    std::atomic<int> refused{0};
    auto const begin = [&](ZuEthernetProtocol protocol) {
        try
        {
            operations->StartScan(protocol);
        }
        catch (Zu::Exception const& exception)
        {
            EXPECT_EQ(exception.Status(), -976);
            ++refused;
        }
    };

    std::thread other([&] { begin(PROTOCOL_8); });
    begin(PROTOCOL_7);
    other.join();
    release.Open();

    ASSERT_TRUE(calls.WaitFor("ended"));
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(calls.Count("Start"), 1u);
}

TEST_F(ControlProtocolOperationsTest, LooksAtArgumentsBeforeItLooksForAnotherOperation)
{
    ZuTest::Latch release;
    systemInterface.on["Start"] = [&] { release.Wait(); };
    operations->StartScan(PROTOCOL_7);

    EXPECT_EQ(RefusalOf([this] { operations->Alignment(PROTOCOL_7, nullptr); }),
              (Refusal{-997, "Missing scanner id parameter for action 2"}));
    EXPECT_EQ(RefusalOf([this] { operations->ClearAlignment(PROTOCOL_7, nullptr); }),
              (Refusal{-997, "Missing scanner id parameter for action 3"}));
    EXPECT_EQ(RefusalOf([this] { operations->SoftwareTrigger(PROTOCOL_7, nullptr); }),
              (Refusal{-997, "Missing scanner id parameter for action 5"}));
    EXPECT_EQ(RefusalOf([this] { operations->LoadJob(PROTOCOL_7, nullptr); }),
              (Refusal{-997, "No job name for action 4"}));
    EXPECT_EQ(RefusalOf([this] { operations->LoadJob(PROTOCOL_7, ""); }),
              (Refusal{-997, "Empty job name for action 4"}));

    release.Open();
    EXPECT_TRUE(calls.WaitFor("7 ended 1"));
}

TEST_F(ControlProtocolOperationsTest, EndsAnUnknownActionAsABadArgument)
{
    ZuTest::LogRecorder const log;

    RunTestAction(55);

    ASSERT_TRUE(calls.WaitFor("7 ended -997"));
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Error(TASK, "Unexpected action id 55")}));
}

TEST_F(ControlProtocolOperationsTest, EndsTheTestActionsAsTheyAreMadeTo)
{
    ZuTest::LogRecorder const log;

    RunTestAction(200);
    ASSERT_TRUE(calls.WaitFor("7 ended 1", 1));
    RunTestAction(201);
    ASSERT_TRUE(calls.WaitFor("7 ended 1", 2));
    RunTestAction(202);
    ASSERT_TRUE(calls.WaitFor("7 ended 0", 1));
    RunTestAction(204);
    ASSERT_TRUE(calls.WaitFor("7 ended 0", 2));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error(TASK, "Exception processing action id 202"),
                           ZuTest::CaughtEntry(202, "Testing action id 202"), ZuTest::BackTrace(),
                           ZuTest::Error(TASK, "Exception processing action id 204"),
                           ZuTest::CaughtEntry(204, "Async test action id 204"), ZuTest::BackTrace()}));
}

TEST_F(ControlProtocolOperationsTest, NeverEndsAnAsynchronousOperationByItself)
{
    RunTestAction(203);
    EXPECT_EQ(RefusalOf([this] { operations->StartScan(PROTOCOL_7); }),
              (Refusal{-976, "Protocol 7 operation 0 rejected because another operation is in progress"}));

    FreeTheFlag();
    RunTestAction(200); // runs after it on the same worker
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    WaitForTheRoadToBeEmpty();

    EXPECT_EQ(calls.Count("7 ended 1"), 1u);
}

TEST_F(ControlProtocolOperationsTest, LetsAHandlerBeginTheNextOperation)
{
    operations->AddOpEndEventHandler(PROTOCOL_7, [this](int) {
        if (calls.Count("Stop") == 0)
        {
            operations->StopScan(PROTOCOL_7);
        }
    });

    operations->StartScan(PROTOCOL_7);

    EXPECT_TRUE(calls.WaitFor("7 ended 1", 2));
    EXPECT_EQ(calls.All(), (Calls{"Start", "7 ended 1", "Stop", "7 ended 1"}));
}

TEST_F(ControlProtocolOperationsTest, FreesTheFlagForAProtocolWithoutHandlers)
{
    auto const bound = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;

    operations->StartScan(PROTOCOL_8);
    while (IsInFlight() && std::chrono::steady_clock::now() < bound)
    {
        std::this_thread::yield();
    }
    ASSERT_FALSE(IsInFlight());

    operations->StartScan(PROTOCOL_7);

    EXPECT_TRUE(calls.WaitFor("7 ended 1"));
}

TEST_F(ControlProtocolOperationsTest, CallsNoLaterHandlerOfAnEndWhoseHandlerThrewAndGoesOn)
{
    ZuTest::LogRecorder const log;
    operations->AddOpEndEventHandler(PROTOCOL_8, [this](int) {
        calls.Add("throws");
        ZU_THROW(-3, "handler");
    });
    ListenTo(PROTOCOL_8);

    operations->StartScan(PROTOCOL_8);
    ASSERT_TRUE(calls.WaitFor("throws"));
    operations->StartScan(PROTOCOL_7);

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_EQ(calls.Count("8 ended 1"), 0u);
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Error(DISPATCHER, "EXCEPTION THROWN: "),
                                                       ZuTest::CaughtEntry(-3, "handler"), ZuTest::BackTrace()}));
}

TEST_F(ControlProtocolOperationsTest, CallsHandlersInOrderAndNoneThatWasRemovedMeanwhile)
{
    Zu::Event<int>::CallbackId removed;
    operations->AddOpEndEventHandler(PROTOCOL_8, [&](int) {
        calls.Add("first");
        operations->RemoveOpEndEventHandler(PROTOCOL_8, removed);
    });
    removed = operations->AddOpEndEventHandler(PROTOCOL_8, [this](int) { calls.Add("removed"); });
    operations->AddOpEndEventHandler(PROTOCOL_8, [this](int) { calls.Add("last"); });

    operations->StartScan(PROTOCOL_8);

    ASSERT_TRUE(calls.WaitFor("last"));
    EXPECT_EQ(calls.All(), (Calls{"Start", "first", "last"}));
}

TEST_F(ControlProtocolOperationsTest, TreatsHandlersAsEveryEventDoes)
{
    EXPECT_FALSE(operations->AddOpEndEventHandler(PROTOCOL_7, {}).second);
    operations->RemoveOpEndEventHandler(PROTOCOL_7, {});
    operations->RemoveOpEndEventHandler(PROTOCOL_8, {});

    operations->StartScan(PROTOCOL_7);

    EXPECT_TRUE(calls.WaitFor("7 ended 1"));
}

TEST_F(ControlProtocolOperationsTest, EndsAnAlignmentWhenTheScannerReportsIt)
{
    operations->Alignment(PROTOCOL_7, "s");
    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));
    EXPECT_EQ(RefusalOf([this] { operations->StartScan(PROTOCOL_7); }),
              (Refusal{-976, "Protocol 7 operation 0 rejected because another operation is in progress"}));

    CompleteAlignment();

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_EQ(scanEngines.event.Count(), 0u);
    EXPECT_EQ(calls.All(),
              (Calls{"AlignmentCompletedEvent(s)", "Alignment(s)", "AlignmentCompletedEvent(s)", "7 ended 1"}));
}

TEST_F(ControlProtocolOperationsTest, TakesEveryOtherCompletionForAFailure)
{
    for (auto const status : {ZuScan::AlignCompletionStatus::FAILED, ZuScan::AlignCompletionStatus::CANCELLED})
    {
        calls.Clear();
        operations->Alignment(PROTOCOL_7, "s");
        ASSERT_TRUE(calls.WaitFor("Alignment(s)"));

        CompleteAlignment(status);

        EXPECT_TRUE(calls.WaitFor("7 ended 0"));
    }
}

TEST_F(ControlProtocolOperationsTest, RemovesTheHandlerOfAnAlignmentThatFailedToStart)
{
    ZuTest::LogRecorder const log;
    scanEngines.on["Alignment(s)"] = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "no align"); };

    operations->Alignment(PROTOCOL_7, "s");

    ASSERT_TRUE(calls.WaitFor("7 ended 0"));
    EXPECT_EQ(scanEngines.event.Count(), 0u);
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Error(TASK, "Exception processing action id 2"),
                                                       ZuTest::CaughtEntry(-998, "no align"), ZuTest::BackTrace()}));
}

TEST_F(ControlProtocolOperationsTest, TellsTheEndAlsoWhenTheCleanUpOfAFailedStartFails)
{
    scanEngines.on["Alignment()"] = [] {};
    operations->Alignment(PROTOCOL_7, ""); // leaves its handler and its id behind
    ASSERT_TRUE(calls.WaitFor("Alignment()"));
    CompleteAlignment();
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    scanEngines.on["AlignmentCompletedEvent(gone)"] = [] { ZU_THROW(Zu::Status::NOT_FOUND, "no scanner"); };

    operations->Alignment(PROTOCOL_7, "gone");

    ASSERT_TRUE(calls.WaitFor("7 ended 0"));
    operations->StartScan(PROTOCOL_7);
    EXPECT_TRUE(calls.WaitFor("7 ended 1", 2));
}

TEST_F(ControlProtocolOperationsTest, LeavesTheHandlerOfAnAlignmentThatNamedNoScanner)
{
    ZuTest::LogRecorder const log;
    operations->Alignment(PROTOCOL_7, "");
    ASSERT_TRUE(calls.WaitFor("Alignment()"));
    CompleteAlignment();
    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    EXPECT_EQ(scanEngines.event.Count(), 1u);

    operations->Alignment(PROTOCOL_7, "");
    ASSERT_TRUE(calls.WaitFor("Alignment()", 2));
    CompleteAlignment(); // both handlers report an end; the second end has no operation in flight

    ASSERT_TRUE(calls.WaitFor("7 ended 1", 3));
    operations.reset(); // the dispatcher logs after it has called the handlers
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Error(DISPATCHER, "EXCEPTION THROWN: "),
                                                       ZuTest::CaughtEntry(-1000, ""), ZuTest::BackTrace()}));
}

TEST_F(ControlProtocolOperationsTest, KeepsTheFlagAndCallsNobodyWhenTheScannerIsGoneAtTheEnd)
{
    ZuTest::LogRecorder const log;
    std::atomic<int> asked{0};
    scanEngines.on["AlignmentCompletedEvent(s)"] = [&asked] {
        if (++asked > 1)
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "no scanner");
        }
    };
    operations->Alignment(PROTOCOL_7, "s");
    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));

    CompleteAlignment();
    ASSERT_TRUE(calls.WaitFor("AlignmentCompletedEvent(s)", 2));

    EXPECT_EQ(RefusalOf([this] { operations->StopScan(PROTOCOL_8); }),
              (Refusal{-976, "Protocol 8 operation 1 rejected because another operation is in progress"}));
    operations.reset();
    EXPECT_EQ(calls.Count("7 ended 1") + calls.Count("7 ended 0"), 0u);
    EXPECT_EQ(log.LinesWithShortTraces(), (std::vector{ZuTest::Error(DISPATCHER, "EXCEPTION THROWN: "),
                                                       ZuTest::CaughtEntry(-999, "no scanner"), ZuTest::BackTrace()}));
}

TEST_F(ControlProtocolOperationsTest, LeavesTheHandlerOfAnUnnamedAlignmentThatFailedToStart)
{
    scanEngines.on["Alignment()"] = [] { ZU_THROW(Zu::Status::NOT_OFFERED, "no align"); };

    operations->Alignment(PROTOCOL_7, "");

    ASSERT_TRUE(calls.WaitFor("7 ended 0"));
    EXPECT_EQ(scanEngines.event.Count(), 1u);
    EXPECT_EQ(calls.All(), (Calls{"AlignmentCompletedEvent()", "Alignment()", "7 ended 0"}));
}

TEST_F(ControlProtocolOperationsTest, TellsAnEndToNobodyButWhoAsked)
{
    ListenTo(PROTOCOL_8);

    operations->StartScan(PROTOCOL_7);

    ASSERT_TRUE(calls.WaitFor("7 ended 1"));
    WaitForTheRoadToBeEmpty();
    EXPECT_EQ(calls.All(), (Calls{"Start", "7 ended 1", "999 ended 1"}));
}

TEST_F(ControlProtocolOperationsTest, DoesNotEndAnOperationWhenTheDispatchersWaitTimesOut)
{
    ZuTest::LogRecorder const log;
    operations->Alignment(PROTOCOL_7, "s");
    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));

    LetTheDispatcherTimeOut();

    EXPECT_TRUE(IsInFlight());
    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{});
    CompleteAlignment();
    EXPECT_TRUE(calls.WaitFor("7 ended 1"));
}

TEST_F(ControlProtocolOperationsTest, NamesItsDispatcherAndEndsItWithSuccess)
{
    operations->AddOpEndEventHandler(PROTOCOL_8, [this](int) {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof name);
        calls.Add(name);
    });
    operations->StartScan(PROTOCOL_8);
    EXPECT_TRUE(calls.WaitFor("CtlProtoOp.Disp"));

    EXPECT_EQ(DispatchUntilTheEnd(), 1);
}

TEST_F(ControlProtocolOperationsTest, FreesRecordsThatNobodyTook)
{
    ZuTest::Latch release;
    operations->AddOpEndEventHandler(PROTOCOL_8, [&](int) {
        calls.Add("held");
        release.Wait();
    });
    QueueEnd(PROTOCOL_8, 1);
    ASSERT_TRUE(calls.WaitFor("held"));
    for (int i = 0; i < 3; ++i)
    {
        QueueEnd(PROTOCOL_7, 1); // freed with the queue, or delivered before the dispatcher sees the cleared flag
    }
    std::thread releasing([&] { release.Open(); });

    operations.reset();
    releasing.join();

    EXPECT_EQ(calls.Count("held"), 1u);
}

TEST_F(ControlProtocolOperationsTest, CannotBeMadeWithoutThreads)
{
    ZuTest::NoNewThreads const none;

    EXPECT_EQ(RefusalOf([this] { ControlProtocolOperations{systemInterface, scanEngines}; }), (Refusal{0, ""}));
}

TEST_F(ControlProtocolOperationsTest, GoesWhileAnAlignmentIsInFlight)
{
    operations->Alignment(PROTOCOL_7, "s");
    ASSERT_TRUE(calls.WaitFor("Alignment(s)"));

    operations.reset();
    EXPECT_EQ(scanEngines.event.Count(), 1u);
    CompleteAlignment(); // a handler left behind would call the destroyed object

    EXPECT_EQ(calls.Count("7 ended 1"), 0u);
}

TEST_F(ControlProtocolOperationsTest, GoesWhileTheScannerReports)
{
    for (int i = 0; i < 20; ++i)
    {
        calls.Clear();
        operations->Alignment(PROTOCOL_7, "s");
        ASSERT_TRUE(calls.WaitFor("Alignment(s)"));
        std::thread reporting([this] { CompleteAlignment(); });
        operations.reset();
        reporting.join();
        SetUp();
    }
}

TEST_F(ControlProtocolOperationsTest, WaitsForTheOperationThatRuns)
{
    ZuTest::Latch release;
    systemInterface.on["Start"] = [&] {
        release.Wait();
        calls.Add("done");
    };
    operations->StartScan(PROTOCOL_7);
    ASSERT_TRUE(calls.WaitFor("Start"));
    std::thread releasing([&] { release.Open(); });

    operations.reset();
    releasing.join();

    EXPECT_EQ(calls.Count("done"), 1u);
}

TEST_F(ControlProtocolOperationsTest, AddsAndRemovesHandlersWhileEndsAreTold)
{
    for (int i = 0; i < 200; ++i)
    {
        QueueEnd(PROTOCOL_8, 1);
        auto const id = ListenTo(PROTOCOL_8);
        operations->RemoveOpEndEventHandler(PROTOCOL_8, id);
    }
    WaitForTheRoadToBeEmpty();

    calls.Clear();
    QueueEnd(PROTOCOL_8, 1); // no handler is left
    WaitForTheRoadToBeEmpty();

    EXPECT_EQ(calls.Count("8 ended 1"), 0u);
}

} // namespace ZuControl
