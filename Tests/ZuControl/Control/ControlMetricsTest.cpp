#include "ZuControl/Control/ControlMetrics.h"

#include "Support/CallLog.h"
#include "Support/FakeControlManager.h"
#include "Support/FakeProtocol.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ThreadNames.h"
#include "ZuApi/Properties/SharedText.h"
#include "ZuApi/Properties/Value.h"
#include "ZuControl/Control/MetricsRecord.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlMetricsTest : public testing::Test
{
protected:
    using Calls = ZuTest::CallLog::Calls;
    using CallbackId = ControlMetrics::CallbackId;
    using Source = ZuCommon::IMetricsSource;

    static constexpr uint64 NEVER_USEC = 3'600'000'000; // longer than any test: no timer fires
    static constexpr uint64 QUICK_USEC = 1'000;

    ControlMetricsTest()
    {
        a.metrics.Register("first", first);
        a.metrics.Register("second", second);
        b.metrics.Register("listening", listening);
        manager.Put("a").metrics.BindProtocol(&a);
        manager.Put("b").metrics.BindProtocol(&b);
    }

    ~ControlMetricsTest() override
    {
        metrics.reset(); // before the objects that its threads use
    }

    /// Builds the metrics with their default intervals.
    void Build()
    {
        metrics = std::make_unique<ControlMetrics>(manager);
    }

    /// Builds the metrics with these intervals. The report timer is stopped, as after construction.
    void BuildWith(uint64 updateUsec, uint64 reportUsec)
    {
        Build();
        metrics->ChangeUpdateInterval(updateUsec);
        metrics->ChangeReportInterval(reportUsec);
        metrics->StopReportTimer();
        calls.Clear();
    }

    CallbackId Subscribe(std::string const& key, std::string const& name)
    {
        return metrics->AddReportHandler([this, name](Source const&) { calls.Add(name); }, key);
    }

    /// Lets the next update of "a" run `step` and then block until `release` opens.
    void HangAtA(std::function<void()> const& step)
    {
        a.on["UpdateMetrics"] = [this, step] {
            step();
            entered.Open();
            release.Wait();
        };
        ChangeUpdateInterval(QUICK_USEC);
        ASSERT_TRUE(entered.Wait());
    }

    void Report()
    {
        metrics->DispatchReports();
    }

    void Update()
    {
        metrics->UpdateMetrics();
    }

    uint64 ChangeReportInterval(uint64 usec)
    {
        return metrics->ChangeReportInterval(usec);
    }

    uint64 ChangeUpdateInterval(uint64 usec)
    {
        return metrics->ChangeUpdateInterval(usec);
    }

    void StopUpdateTimer()
    {
        metrics->StopUpdateTimer();
    }

    std::size_t Started() const
    {
        return log.CountOfText("Control metrics reporting started.");
    }

    std::size_t Stopped() const
    {
        return log.CountOfText("Control metrics reporting stopped.");
    }

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::Latch entered;
    ZuTest::Latch release;
    Zu::Properties::Value<uint64> first;
    Zu::Properties::Value<uint64> second;
    Zu::Properties::SharedText listening;
    ZuTest::FakeProtocol a{calls, 1, "a."};
    ZuTest::FakeProtocol b{calls, 2, "b."};
    ZuTest::FakeControlManager manager{calls};
    std::unique_ptr<ControlMetrics> metrics;
};

TEST_F(ControlMetricsTest, BringsEveryRecordUpToDateFourTimesASecondWithNobodySubscribed)
{
    auto const begin = std::chrono::steady_clock::now();

    Build();

    ASSERT_TRUE(calls.WaitFor("b.UpdateMetrics", 3));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(750));
    EXPECT_EQ(ZuTest::CountOfThreads("AsyncTimer"), 1u); // the report timer has never been started
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlMetricsTest, UpdatesInOrderOfTheNamesWhetherEnabledOrNot)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    manager.GetInstance("a").Enable(true);
    calls.Clear();

    Update();

    EXPECT_EQ(calls.All(), (Calls{"a.UpdateMetrics", "b.UpdateMetrics"}));
}

TEST_F(ControlMetricsTest, EndsARoundOfUpdatesAtTheFirstThatThrowsAndGoesOnWithTheNextRound)
{
    a.on["UpdateMetrics"] = [] { throw std::runtime_error("no record"); };
    BuildWith(NEVER_USEC, NEVER_USEC);

    EXPECT_THROW(Update(), std::runtime_error);
    EXPECT_EQ(calls.All(), (Calls{"a.UpdateMetrics"}));

    ChangeUpdateInterval(QUICK_USEC);
    ASSERT_TRUE(calls.WaitFor("a.UpdateMetrics", 3));
    StopUpdateTimer();
    EXPECT_EQ(calls.Count("b.UpdateMetrics"), 0u);
    auto const lines = log.LinesWithShortTraces();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0].text, "EXCEPTION THROWN: ");
    EXPECT_EQ(lines[1], ZuTest::CaughtForeign("no record"));
    EXPECT_EQ(lines[2], ZuTest::BackTrace());
}

TEST_F(ControlMetricsTest, TellsWhenARoundOfUpdatesWasLastDone)
{
    uint64 const beforeUsec = wTime_NowUsec();
    BuildWith(NEVER_USEC, NEVER_USEC);
    uint64 const builtUsec = metrics->Vitals().lastDoneUsec;
    EXPECT_GE(builtUsec, beforeUsec);
    EXPECT_LE(builtUsec, wTime_NowUsec());
    uint64 const beginUsec = wTime_NowUsec();

    Update();

    ControlVitals::Metrics const vitals = metrics->Vitals();
    EXPECT_GE(vitals.lastDoneUsec, beginUsec);
    EXPECT_EQ(vitals.roundSinceUsec, 0u);
    EXPECT_EQ(vitals.lastFailureUsec, 0u);
}

TEST_F(ControlMetricsTest, TellsWhoseUpdateFailedAndWhen)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    b.on["UpdateMetrics"] = [] { throw std::runtime_error("no record"); };
    uint64 const builtUsec = metrics->Vitals().lastDoneUsec;
    uint64 const beginUsec = wTime_NowUsec();

    EXPECT_THROW(Update(), std::runtime_error);

    ControlVitals::Metrics const vitals = metrics->Vitals();
    EXPECT_EQ(vitals.failedTypeName, "b");
    EXPECT_GE(vitals.lastFailureUsec, beginUsec);
    EXPECT_EQ(vitals.lastDoneUsec, builtUsec);
    EXPECT_EQ(vitals.roundSinceUsec, 0u);
}

TEST_F(ControlMetricsTest, TellsAtWhomAnUpdateStandsWithoutWaitingForIt)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    uint64 const beginUsec = wTime_NowUsec();
    a.on["UpdateMetrics"] = [this] {
        entered.Open();
        release.Wait();
    };
    ChangeUpdateInterval(QUICK_USEC);
    ASSERT_TRUE(entered.Wait());

    ControlVitals::Metrics const vitals = metrics->Vitals();

    EXPECT_EQ(vitals.typeName, "a");
    EXPECT_GE(vitals.roundSinceUsec, beginUsec);
    EXPECT_LE(vitals.roundSinceUsec, wTime_NowUsec());
    release.Open();
}

TEST_F(ControlMetricsTest, GivesTheRecordItselfAsTheLastReport)
{
    BuildWith(NEVER_USEC, NEVER_USEC);

    EXPECT_EQ(&metrics->LastReport("a"), &manager.GetInstance("a").MetricsSource());
    EXPECT_EQ(RefusalOf([this] { metrics->LastReport("x"); }),
              (Refusal{-999, "Control protocol type not recognized: 'x'."}));
}

TEST_F(ControlMetricsTest, ReportsTypeByTypeToEachInOrderOfAddition)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    Subscribe("b", "b1");
    Subscribe("a", "a1");
    Subscribe("b", "b2");
    Source const* reported = nullptr;
    metrics->AddReportHandler([&reported](Source const& source) { reported = &source; }, "a");

    Report();

    EXPECT_EQ(calls.All(), (Calls{"a1", "b1", "b2"}));
    EXPECT_EQ(reported, &manager.GetInstance("a").MetricsSource());
}

TEST_F(ControlMetricsTest, StartsReportingWithTheFirstWhoSubscribesAndSaysSoOnce)
{
    BuildWith(NEVER_USEC, QUICK_USEC);

    Subscribe("a", "first");
    Subscribe("a", "second");
    Subscribe("b", "other");

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlMetrics::AddReportHandler",
                                                     "Control metrics reporting started.")}));
    EXPECT_TRUE(calls.WaitFor("other", 2));
}

TEST_F(ControlMetricsTest, ReportsOnceASecond)
{
    Build();
    StopUpdateTimer();
    auto const begin = std::chrono::steady_clock::now();

    Subscribe("a", "report");

    ASSERT_TRUE(calls.WaitFor("report"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(ControlMetricsTest, StopsReportingWithTheLastWhoLeavesAndSaysSoOnce)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    CallbackId const first = Subscribe("a", "first");
    CallbackId const second = Subscribe("a", "second");
    log.Clear();

    metrics->RemoveReportHandler(first, "a");

    EXPECT_TRUE(log.Lines().empty());
    Report();
    EXPECT_EQ(calls.All(), (Calls{"second"}));

    metrics->RemoveReportHandler(second, "a");

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlMetrics::RemoveReportHandler",
                                                     "Control metrics reporting stopped.")}));
    EXPECT_EQ(RefusalOf([&] { metrics->RemoveReportHandler(second, "a"); }), (Refusal{-997, ""}));
}

TEST_F(ControlMetricsTest, GoesOnReportingOneTypeWhenTheOtherHasNobodyLeft)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    CallbackId const first = Subscribe("a", "first");
    Subscribe("b", "other");

    metrics->RemoveReportHandler(first, "a");

    std::size_t const before = calls.Count("first");
    ASSERT_TRUE(calls.WaitFor("other", calls.Count("other") + 2));
    EXPECT_EQ(calls.Count("first"), before);
    EXPECT_EQ(Stopped(), 0u);
}

TEST_F(ControlMetricsTest, CallsNobodyWhoHasLeftAlsoWhenReportingBeginsAnew)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    CallbackId const first = Subscribe("a", "first");
    ASSERT_TRUE(calls.WaitFor("first"));

    metrics->RemoveReportHandler(first, "a");
    std::size_t const before = calls.Count("first");
    Subscribe("a", "marker");

    ASSERT_TRUE(calls.WaitFor("marker", 2));
    EXPECT_EQ(calls.Count("first"), before);
    EXPECT_EQ(Started(), 2u);
    EXPECT_EQ(Stopped(), 1u);
}

TEST_F(ControlMetricsTest, RefusesAnUnknownTypeBeforeAnythingChanges)
{
    Build();

    EXPECT_EQ(RefusalOf([this] { Subscribe("x", "never"); }),
              (Refusal{-999, "Control protocol type not recognized: 'x'."}));

    EXPECT_EQ(RefusalOf([this] { metrics->RemoveReportHandler({}, "x"); }), (Refusal{-997, ""}));
    ASSERT_TRUE(calls.WaitFor("b.UpdateMetrics"));
    EXPECT_EQ(ZuTest::CountOfThreads("AsyncTimer"), 1u); // the update timer
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlMetricsTest, CountsAnEmptyFunctionAsSomebodyUntilAnIdThatIsNotValidIsRemoved)
{
    BuildWith(NEVER_USEC, NEVER_USEC);

    CallbackId const id = metrics->AddReportHandler({}, "a");

    EXPECT_FALSE(id.second);
    EXPECT_EQ(Started(), 1u);
    Report();
    metrics->RemoveReportHandler(id, "a");
    EXPECT_EQ(Stopped(), 1u);
    EXPECT_EQ(RefusalOf([&] { metrics->RemoveReportHandler(id, "a"); }), (Refusal{-997, ""}));
}

TEST_F(ControlMetricsTest, RemovesNothingForAnIdThatIsNotValidOrOfAnotherType)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    Subscribe("a", "a1");
    CallbackId const other = Subscribe("b", "b1");

    metrics->RemoveReportHandler({}, "a");
    metrics->RemoveReportHandler(other, "a");

    Report();
    EXPECT_EQ(calls.All(), (Calls{"a1", "b1"}));
    EXPECT_EQ(Stopped(), 0u);
}

TEST_F(ControlMetricsTest, EndsAReportAtTheFirstHandlerThatThrowsUntilTheNextReport)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    metrics->AddReportHandler([](Source const&) { throw std::runtime_error("client gone"); }, "a");
    Subscribe("a", "behind");
    Subscribe("b", "other type");

    EXPECT_THROW(Report(), std::runtime_error);

    EXPECT_TRUE(calls.All().empty());
}

TEST_F(ControlMetricsTest, ReportsAlsoAnInstanceWhoseProtocolIsGone)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    manager.GetInstance("a");
    dynamic_cast<ZuTest::FakeControlInstance&>(manager.GetInstance("a")).metrics.ClearProtocol();
    metrics->AddReportHandler([](Source const& source) { source.GetMetrics(); }, "a");

    EXPECT_EQ(RefusalOf([this] { Report(); }),
              (Refusal{-1000, "No protocol implementation available for the metrics fetch operation"}));
}

TEST_F(ControlMetricsTest, ChangesItsIntervalsAndGivesTheOldOnes)
{
    Build();

    EXPECT_EQ(ChangeReportInterval(NEVER_USEC), 1'000'000u);
    EXPECT_TRUE(ZuTest::WaitForThreads("AsyncTimer", 2)); // the report timer starts without a subscriber too
    EXPECT_EQ(ChangeReportInterval(QUICK_USEC), NEVER_USEC);
    EXPECT_EQ(ChangeUpdateInterval(QUICK_USEC), 250'000u);
    EXPECT_TRUE(calls.WaitFor("a.UpdateMetrics", 3));
}

TEST_F(ControlMetricsTest, LetsAHandlerRemoveItselfAsTheLastOne)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    auto const id = std::make_shared<CallbackId>();
    ZuTest::Latch known;
    *id = metrics->AddReportHandler(
        [this, id, &known](Source const&) {
            known.Wait();
            metrics->RemoveReportHandler(*id, "a");
            calls.Add("left");
        },
        "a");
    known.Open();

    ASSERT_TRUE(calls.WaitFor("left"));
    EXPECT_EQ(Stopped(), 1u);
    Subscribe("a", "marker");
    ASSERT_TRUE(calls.WaitFor("marker"));
    EXPECT_EQ(calls.Count("left"), 1u);
}

TEST_F(ControlMetricsTest, WaitsForAHandlerThatRunsBeforeItIsRemoved)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    CallbackId const id = metrics->AddReportHandler(
        [this](Source const&) {
            entered.Open();
            release.Wait();
            calls.Add("handled");
        },
        "a");
    ASSERT_TRUE(entered.Wait());
    std::thread remover([this, id] {
        metrics->RemoveReportHandler(id, "a");
        calls.Add("removed");
    });

    release.Open();
    remover.join();

    // Further reports may call the handler before it is removed, but none after that.
    Calls const seen = calls.All();
    ASSERT_GE(seen.size(), 2u);
    EXPECT_EQ(seen.back(), "removed");
    EXPECT_EQ(calls.Count("removed"), 1u);
    EXPECT_EQ(calls.Count("handled"), seen.size() - 1);
}

TEST_F(ControlMetricsTest, LetsOthersComeAndGoWhileAHandlerRuns)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    metrics->AddReportHandler(
        [this](Source const&) {
            entered.Open();
            release.Wait();
        },
        "a");
    ASSERT_TRUE(entered.Wait());

    CallbackId const id = Subscribe("b", "other"); // neither call waits for the running handler
    metrics->RemoveReportHandler(id, "b");

    EXPECT_EQ(calls.Count("other"), 0u);
    release.Open();
}

TEST_F(ControlMetricsTest, WaitsAtItsEndForTheHandlerThatRuns)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    metrics->AddReportHandler(
        [this](Source const&) {
            entered.Open();
            release.Wait();
            calls.Add("handled");
        },
        "a");
    ASSERT_TRUE(entered.Wait());
    std::thread releasing([this] { release.Open(); });

    metrics.reset();
    std::size_t const handled = calls.Count("handled");
    releasing.join();

    EXPECT_GE(handled, 1u);
    EXPECT_EQ(calls.Count("handled"), handled);
}

TEST_F(ControlMetricsTest, ShowsTheLastFinishedUpdateWhileTheNextOneHangs)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    a.on["UpdateMetrics"] = [this] { first.Set(first.Get() + 1); };
    Update();
    HangAtA([this] { first.Set(7); });

    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 1}, {"second", 0}}));
    EXPECT_EQ(metrics->Snapshot("a")->schema.at("properties").at("first"), nlohmann::json({{"type", "integer"}}));

    release.Open();
    StopUpdateTimer();
    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 7}, {"second", 0}}));
}

TEST_F(ControlMetricsTest, ShowsARecordAsItWasBuiltWhileTheFirstUpdateHangs)
{
    first.Set(3);
    BuildWith(NEVER_USEC, NEVER_USEC);
    HangAtA([] {});

    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 3}, {"second", 0}}));

    release.Open();
}

TEST_F(ControlMetricsTest, ShowsTheOthersAsTheyStandWhileOneHangsAheadOfThem)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    HangAtA([] {});

    listening.Set("127.0.0.1:1502"); // as a protocol does that starts in the meantime

    EXPECT_EQ(metrics->Snapshot("b")->values, nlohmann::json({{"listening", "127.0.0.1:1502"}}));
    release.Open();
}

TEST_F(ControlMetricsTest, ShowsNothingOfAnUpdateThatBrokeOff)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    a.on["UpdateMetrics"] = [this] {
        first.Set(1);
        throw std::runtime_error("no record");
    };
    EXPECT_THROW(Update(), std::runtime_error);

    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 0}, {"second", 0}}));

    a.on.clear();
    Update();
    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 1}, {"second", 0}}));
}

TEST_F(ControlMetricsTest, MixesNoTwoUpdatesInASnapshot)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    a.on["UpdateMetrics"] = [this] {
        first.Set(first.Get() + 1);
        std::this_thread::yield();
        second.Set(first.Get());
    };
    metrics->AddReportHandler(
        [this](Source const&) {
            EXPECT_EQ(first.Get(), second.Get()); // the handler reads the live record, never during an update
            calls.Add("report");
        },
        "a");
    ChangeReportInterval(QUICK_USEC);
    ChangeUpdateInterval(QUICK_USEC);

    auto const read = [this] {
        for (int i = 0; i < 500; ++i)
        {
            auto const snapshot = metrics->Snapshot("a");
            EXPECT_EQ(snapshot->values.at("first"), snapshot->values.at("second"));
        }
    };
    std::thread other(read);
    read();
    other.join();

    EXPECT_TRUE(calls.WaitFor("report"));
    EXPECT_TRUE(calls.WaitFor("a.UpdateMetrics", 2));
}

TEST_F(ControlMetricsTest, KeepsSnapshotsComingToTheirHandlersWhileAnUpdateHangs)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    HangAtA([] {});

    metrics->AddSnapshotHandler([this](MetricsSnapshot const& snapshot) { calls.Add("a " + snapshot.values.dump()); },
                                "a");
    metrics->AddSnapshotHandler([this](MetricsSnapshot const& snapshot) { calls.Add("b " + snapshot.values.dump()); },
                                "b");

    EXPECT_TRUE(calls.WaitFor(R"(a {"first":0,"second":0})", 3));
    EXPECT_TRUE(calls.WaitFor(R"(b {"listening":""})", 3));
    release.Open();
}

TEST_F(ControlMetricsTest, KeepsTheLiveRecordFromItsHandlersOnlyWhileItsOwnUpdateHangs)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    HangAtA([] {});

    Subscribe("a", "live a");
    Subscribe("b", "live b");

    ASSERT_TRUE(calls.WaitFor("live b", 3));
    EXPECT_EQ(calls.Count("live a"), 0u);
    release.Open();
    EXPECT_TRUE(calls.WaitFor("live a", 2));
}

TEST_F(ControlMetricsTest, RemovesASnapshotHandlerLikeAReportHandler)
{
    BuildWith(NEVER_USEC, NEVER_USEC);
    CallbackId const id = metrics->AddSnapshotHandler([this](MetricsSnapshot const&) { calls.Add("snapshot"); }, "b");
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlMetrics::AddReportHandler",
                                                     "Control metrics reporting started.")}));
    Report();

    metrics->RemoveReportHandler(id, "b");

    EXPECT_EQ(calls.Count("snapshot"), 1u);
    EXPECT_EQ(Stopped(), 1u);
    EXPECT_EQ(RefusalOf([this] { metrics->AddSnapshotHandler([](MetricsSnapshot const&) {}, "x"); }),
              (Refusal{-999, "Control protocol type not recognized: 'x'."}));
}

TEST_F(ControlMetricsTest, NamesTheOperationThatRefusesToRemoveAHandler)
{
    BuildWith(NEVER_USEC, NEVER_USEC);

    try
    {
        metrics->RemoveReportHandler({}, "a");
        FAIL() << "it was not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -997);
        EXPECT_STREQ(exception.Function(), "ZuControl::ControlMetrics::RemoveReportHandler");
    }
}

TEST_F(ControlMetricsTest, LetsSubscribersLeaveWhileAnUpdateHangs)
{
    BuildWith(NEVER_USEC, QUICK_USEC);
    CallbackId const id = Subscribe("b", "report");
    ASSERT_TRUE(calls.WaitFor("report"));
    a.on["UpdateMetrics"] = [this] {
        entered.Open();
        release.Wait();
    };
    ChangeUpdateInterval(QUICK_USEC);
    ASSERT_TRUE(entered.Wait());

    metrics->RemoveReportHandler(id, "b"); // waits for the running report

    EXPECT_EQ(Stopped(), 1u);
    release.Open();
}

TEST_F(ControlMetricsTest, RefusesASnapshotOfARecordThatCannotBeRead)
{
    a.on["GetMetrics"] = [] { throw std::runtime_error("no record"); };
    manager.Put("c"); // without a protocol

    BuildWith(NEVER_USEC, NEVER_USEC);

    EXPECT_THROW(metrics->Snapshot("a"), std::runtime_error);
    EXPECT_EQ(RefusalOf([this] { metrics->Snapshot("c"); }),
              (Refusal{-1000, "No protocol implementation available for the metrics fetch operation"}));
    EXPECT_EQ(RefusalOf([this] { metrics->Snapshot("x"); }),
              (Refusal{-999, "Control protocol type not recognized: 'x'."}));
    a.on.clear();
    EXPECT_EQ(metrics->Snapshot("a")->values, nlohmann::json({{"first", 0}, {"second", 0}}));
}

TEST_F(ControlMetricsTest, WaitsASecondForARecordThatWasNeverRead)
{
    a.on["GetMetrics"] = [] { throw std::runtime_error("no record"); };
    BuildWith(NEVER_USEC, NEVER_USEC);
    uint64 const beginUsec = wTime_NowUsec();
    HangAtA([] {});

    for (int i = 0; i < 3; ++i) // the first call waits one second, the later calls do not wait
    {
        EXPECT_EQ(RefusalOf([this] { metrics->Snapshot("a"); }), (Refusal{-993, ""}));
        EXPECT_GE(wTime_NowUsec() - beginUsec, 1'000'000u);
    }

    release.Open();
}

TEST_F(ControlMetricsTest, GoesOnReportingWhoeverStaysThroughAStormOfComingsAndGoings)
{
    BuildWith(QUICK_USEC, QUICK_USEC);
    std::atomic<uint64> reports{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([this, i, &reports] {
            std::string const key = i % 2 == 0 ? "a" : "b";
            for (int k = 0; k < 100; ++k)
            {
                auto const id = metrics->AddReportHandler([&reports](Source const&) { ++reports; }, key);
                if (k % 10 == 0)
                {
                    std::this_thread::yield();
                }
                metrics->RemoveReportHandler(id, key);
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(Started(), Stopped());

    CallbackId const id = Subscribe("a", "stays");

    ASSERT_TRUE(calls.WaitFor("stays", 3));
    metrics->RemoveReportHandler(id, "a");
    auto const lines = log.Lines();
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        EXPECT_EQ(lines[i].text,
                  i % 2 == 0 ? "Control metrics reporting started." : "Control metrics reporting stopped.");
    }
}

} // namespace ZuControl
