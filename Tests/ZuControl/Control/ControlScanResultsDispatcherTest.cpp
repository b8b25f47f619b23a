#include "ZuControl/Control/ControlScanResultsDispatcher.h"

#include "Support/AllocationCounter.h"
#include "Support/CallLog.h"
#include "Support/Latch.h"
#include "Support/NoNewThreads.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ResultSets.h"
#include "Support/TestFrames.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <thread>

namespace ZuControl
{

using ZuTest::MakeSet;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlScanResultsDispatcherTest : public testing::Test
{
protected:
    /// Adds a handler that records the source of the first item of each set, one entry per batch: "a|b".
    Zu::Event<void*>::CallbackId AddNoting()
    {
        return dispatcher.AddResultHandler([this](void* list) {
            std::string batch;
            for (ZuTest::Items const& set : ZuTest::BatchOf(list))
            {
                batch += (batch.empty() ? "" : "|") + set.front().first;
            }
            calls.Add(batch);
        });
    }

    void Add(std::string const& source)
    {
        auto const set = MakeSet({source});
        dispatcher.AddResult(set.get());
    }

    /// Blocks the thread of the handlers in a batch until `release` opens.
    void HoldInABatch()
    {
        dispatcher.AddResultHandler([this](void*) {
            calls.Add("held");
            release.Wait();
        });
        Add("hold");
        ASSERT_TRUE(calls.WaitFor("held"));
    }

    ZuTest::CallLog calls;
    ZuTest::Latch release;
    std::shared_ptr<DispatchCounters> const counters = std::make_shared<DispatchCounters>();
    ControlScanResultsDispatcher dispatcher{nullptr, counters};
};

TEST_F(ControlScanResultsDispatcherTest, HandsASetOver)
{
    AddNoting();

    Add("a");

    EXPECT_TRUE(calls.WaitFor("a"));
}

TEST_F(ControlScanResultsDispatcherTest, CountsBatchesAndSetsAndHowLongTheyWaited)
{
    EXPECT_EQ(counters->batches, 0u);
    HoldInABatch();
    uint64 const beginUsec = wTime_NowUsec();
    Add("a");
    Add("b");
    while (wTime_NowUsec() - beginUsec < 5'000) // the minimum age of both sets
    {
        std::this_thread::yield();
    }

    release.Open();
    ASSERT_TRUE(calls.WaitFor("held", 2));

    EXPECT_EQ(counters->batches, 2u);
    EXPECT_EQ(counters->resultSets, 3u);
    EXPECT_GE(counters->ageUsec, 5'000u);
    EXPECT_LE(counters->ageUsec, 2 * 30'000'000u); // the sets are not older than this test
}

TEST_F(ControlScanResultsDispatcherTest, TellsTheNewestResultsThatTheHandlersHaveTaken)
{
    HoldInABatch();
    uint64 const beginUsec = wTime_NowUsec();
    ZuTest::TestFrame first;
    ZuTest::TestFrame second;
    dispatcher.AddResult(first.Measurement("a", 1).Set());
    dispatcher.AddResult(second.Measurement("a", 2).Set());
    EXPECT_EQ(counters->lastDelivery.Read().usec, 0u); // the first batch is still with the handlers

    release.Open();
    ASSERT_TRUE(calls.WaitFor("held", 2));
    dispatcher.Stop();

    LastDelivery::Content const last = counters->lastDelivery.Read();
    EXPECT_GE(last.usec, beginUsec);
    EXPECT_LE(last.usec, wTime_NowUsec());
    ASSERT_EQ(last.measurements.size(), 1u);
    EXPECT_EQ(last.measurements[0].value, 2);
}

TEST_F(ControlScanResultsDispatcherTest, TellsSinceWhenTheHandlersHaveABatch)
{
    EXPECT_EQ(counters->busySinceUsec, 0u);
    uint64 const beginUsec = wTime_NowUsec();

    HoldInABatch();

    EXPECT_GE(counters->busySinceUsec, beginUsec);
    EXPECT_LE(counters->busySinceUsec, wTime_NowUsec());
    release.Open();
    dispatcher.Stop();
    EXPECT_EQ(counters->busySinceUsec, 0u);
    EXPECT_FALSE(counters->hasDied);
}

TEST_F(ControlScanResultsDispatcherTest, HandsAllThatGatheredInOnePassOverAtOnceAndInOrder)
{
    AddNoting();
    HoldInABatch();
    for (int i = 0; i < 10; ++i)
    {
        Add(std::to_string(i));
    }

    release.Open();

    ASSERT_TRUE(calls.WaitFor("held", 2));
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"hold", "held", "0|1|2|3|4|5|6|7|8|9", "held"}));
}

TEST_F(ControlScanResultsDispatcherTest, NeverKeepsTheResultPathWaitingForAHandler)
{
    constexpr std::size_t SETS = 1000;
    HoldInABatch();

    // On another thread, so that a wait fails the test and does not hang it.
    auto added = std::async(std::launch::async, [this] {
        for (std::size_t i = 0; i < SETS; ++i)
        {
            Add("a");
        }
    });

    bool const wasKeptWaiting = added.wait_for(ZuTest::CallLog::BOUND) != std::future_status::ready;
    std::size_t const heldBatches = calls.Count("held");
    release.Open();
    added.wait();

    EXPECT_FALSE(wasKeptWaiting);
    EXPECT_EQ(heldBatches, 1u); // the handler was in its first batch while all sets were added
}

TEST_F(ControlScanResultsDispatcherTest, AllocatesNothingForASetOnceItIsWarm)
{
    HoldInABatch();
    auto const set = MakeSet({"a"});
    dispatcher.AddResult(set.get());

    ZuTest::AllocationCounter const allocations;
    for (int i = 0; i < 90; ++i) // less than the capacity of a new list
    {
        dispatcher.AddResult(set.get());
    }

    EXPECT_EQ(allocations.Count(), 0u);
    release.Open();
}

TEST_F(ControlScanResultsDispatcherTest, CallsHandlersInOrderOfAddition)
{
    dispatcher.AddResultHandler([this](void*) { calls.Add("first"); });
    dispatcher.AddResultHandler([this](void*) { calls.Add("second"); });

    Add("a");

    ASSERT_TRUE(calls.WaitFor("second"));
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"first", "second"}));
}

TEST_F(ControlScanResultsDispatcherTest, CountsHandlersAndStoresNoEmptyOne)
{
    EXPECT_FALSE(dispatcher.AddResultHandler({}).second);
    EXPECT_EQ(dispatcher.ResultHandlerCount(), 0u);
    auto const id = AddNoting();
    EXPECT_EQ(dispatcher.ResultHandlerCount(), 1u);

    dispatcher.RemoveResultHandler({});
    EXPECT_EQ(dispatcher.ResultHandlerCount(), 1u);
    dispatcher.RemoveResultHandler(id);
    dispatcher.RemoveResultHandler(id);

    EXPECT_EQ(dispatcher.ResultHandlerCount(), 0u);
}

TEST_F(ControlScanResultsDispatcherTest, DropsASetAtItsTurnWhenNobodyListens)
{
    auto const unseen = MakeSet({"unseen"});
    dispatcher.AddResult(unseen.get());
    auto const bound = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;

    while (wObject_RefCount(unseen.get()) > 1 && std::chrono::steady_clock::now() < bound)
    {
        wThread_Sleep(100);
    }

    EXPECT_EQ(wObject_RefCount(unseen.get()), 1u);
}

TEST_F(ControlScanResultsDispatcherTest, ReleasesASetBehindItsBatch)
{
    auto const set = MakeSet({"a"});
    AddNoting();

    dispatcher.AddResult(set.get());
    ASSERT_TRUE(calls.WaitFor("a"));
    dispatcher.Stop();

    EXPECT_EQ(wObject_RefCount(set.get()), 1u);
}

TEST_F(ControlScanResultsDispatcherTest, RefusesASecondStart)
{
    EXPECT_EQ(RefusalOf([this] { dispatcher.Start(); }), (Refusal{-1000, ""}));
}

TEST_F(ControlScanResultsDispatcherTest, StopsTwiceWithoutAWord)
{
    ZuTest::LogRecorder const log;

    dispatcher.Stop();
    dispatcher.Stop();

    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlScanResultsDispatcherTest, KeepsHandlersOverAStopAndAStart)
{
    AddNoting();
    dispatcher.Stop();

    dispatcher.Start();
    Add("again");

    EXPECT_TRUE(calls.WaitFor("again"));
}

TEST_F(ControlScanResultsDispatcherTest, DropsAndReleasesWhatWaitsWhenItStops)
{
    HoldInABatch();
    auto const waiting = MakeSet({"waiting"});
    dispatcher.AddResult(waiting.get());
    EXPECT_EQ(wObject_RefCount(waiting.get()), 2u);
    std::thread stopping([this] { dispatcher.Stop(); });

    release.Open();
    stopping.join();

    EXPECT_EQ(wObject_RefCount(waiting.get()), 1u);
}

TEST_F(ControlScanResultsDispatcherTest, ReleasesAtItsEndWhatCameBehindAStop)
{
    auto const late = MakeSet({"late"});
    {
        ControlScanResultsDispatcher other(nullptr);
        other.Stop();
        other.AddResult(late.get());
        EXPECT_EQ(wObject_RefCount(late.get()), 2u);
    }
    EXPECT_EQ(wObject_RefCount(late.get()), 1u);
}

TEST_F(ControlScanResultsDispatcherTest, RefusesASetThatIsNone)
{
    EXPECT_EQ(RefusalOf([this] { dispatcher.AddResult(nullptr); }), (Refusal{-997, ""}));
}

TEST_F(ControlScanResultsDispatcherTest, KeepsTheClientCountForOthers)
{
    EXPECT_EQ(dispatcher.GetClientCount(), 0u);
    dispatcher.SetClientCount(7);
    EXPECT_EQ(dispatcher.GetClientCount(), 7u);

    dispatcher.SetClientCount(0);
    AddNoting();
    Add("a");

    EXPECT_TRUE(calls.WaitFor("a"));
}

struct ThrowingHandler
{
    char const* name;
    std::function<void()> fail;
    int32 status;
};

/// Whether `condition` becomes true within a bound.
bool ComesTrue(std::function<bool()> const& condition)
{
    auto const deadline = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;
    while (!condition() && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::yield();
    }
    return condition();
}

class ControlScanResultsDispatcherThrow : public testing::TestWithParam<ThrowingHandler>
{
};

TEST_P(ControlScanResultsDispatcherThrow, EndsDeliveryForGoodAndTellsTheStatusAtTheStop)
{
    constexpr char const* LABEL = "ZuControl::ControlScanResultsDispatcher::RunThread";
    ZuTest::LogRecorder const log;
    ZuTest::CallLog calls;
    auto const counters = std::make_shared<DispatchCounters>();
    ControlScanResultsDispatcher dispatcher(nullptr, counters);
    dispatcher.AddResultHandler([&](void*) {
        calls.Add("called");
        GetParam().fail();
    });
    auto const first = MakeSet({"a"});
    auto const second = MakeSet({"b"});
    dispatcher.AddResult(first.get());
    ASSERT_TRUE(calls.WaitFor("called"));

    dispatcher.AddResult(second.get());
    EXPECT_EQ(RefusalOf([&] { dispatcher.Start(); }), (Refusal{-1000, ""})); // the dispatcher still counts as running
    EXPECT_TRUE(ComesTrue([&] { return counters->hasDied.load(); }));
    EXPECT_EQ(counters->busySinceUsec, 0u);
    dispatcher.Stop();

    EXPECT_FALSE(counters->hasDied);
    EXPECT_EQ(calls.Count("called"), 1u);
    EXPECT_EQ(wObject_RefCount(first.get()), 1u);
    EXPECT_EQ(wObject_RefCount(second.get()), 1u);
    EXPECT_EQ(counters->lastDelivery.Read().usec, 0u); // no handler has taken results
    EXPECT_EQ(log.LinesWithoutTraces(),
              (std::vector{ZuTest::Error(LABEL, "EXCEPTION THROWN: "),
                           ZuTest::Info("ZuControl::ControlScanResultsDispatcher::Stop",
                                        "ControlScanResultsDispatcher thread stopped with error:" +
                                            std::to_string(GetParam().status))}));
    dispatcher.Start();
    dispatcher.AddResult(second.get());
    EXPECT_TRUE(calls.WaitFor("called", 2));
}

INSTANTIATE_TEST_SUITE_P(Kinds, ControlScanResultsDispatcherThrow,
                         testing::Values(ThrowingHandler{"Ours", [] { ZU_THROW(-42, "x"); }, -42},
                                         ThrowingHandler{"Standard", [] { throw std::runtime_error("y"); }, 0},
                                         ThrowingHandler{"Neither", [] { throw 5; }, 0}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(ControlScanResultsDispatcher, ForgetsTheAgeOfTheSetsThatStopDrops)
{
    ZuTest::CallLog calls;
    auto const counters = std::make_shared<DispatchCounters>();
    ControlScanResultsDispatcher dispatcher(nullptr, counters);
    auto const failing = dispatcher.AddResultHandler([](void*) { throw 5; });
    auto const set = MakeSet({"a"});
    dispatcher.AddResult(set.get());
    ASSERT_TRUE(ComesTrue([&] { return counters->hasDied.load(); }));
    dispatcher.AddResult(set.get()); // no thread takes it
    uint64 const droppedUsec = wTime_NowUsec();
    ASSERT_TRUE(ComesTrue([&] { return wTime_NowUsec() - droppedUsec > 50'000; }));
    dispatcher.Stop();
    dispatcher.RemoveResultHandler(failing);
    dispatcher.AddResultHandler([&](void*) { calls.Add("came"); });
    uint64 const ageBefore = counters->ageUsec;
    uint64 const beginUsec = wTime_NowUsec();

    dispatcher.AddResult(set.get());
    dispatcher.Start();
    ASSERT_TRUE(calls.WaitFor("came"));

    EXPECT_LE(counters->ageUsec - ageBefore, wTime_NowUsec() - beginUsec);
}

TEST(ControlScanResultsDispatcher, EndsWithoutAWordOfAThreadThatEndedWithSuccess)
{
    ZuTest::LogRecorder const log;
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&](void*) {
        calls.Add("called");
        ZU_THROW(Zu::Status::SUCCESS);
    });
    auto const set = MakeSet({"a"});
    dispatcher.AddResult(set.get());
    ASSERT_TRUE(calls.WaitFor("called"));

    dispatcher.Stop();

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error("ZuControl::ControlScanResultsDispatcher::RunThread", "EXCEPTION THROWN: "),
                           ZuTest::CaughtEntry(1, ""), ZuTest::BackTrace()}));
}

TEST(ControlScanResultsDispatcher, RefusesToBeStoppedByItsOwnHandler)
{
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&](void*) {
        EXPECT_EQ(RefusalOf([&] { dispatcher.Stop(); }), (Refusal{-1000, ""}));
        calls.Add("refused");
    });
    auto const set = MakeSet({"a"});

    dispatcher.AddResult(set.get());

    EXPECT_TRUE(calls.WaitFor("refused"));
}

namespace
{

/// An object in place of a result set. Records its destruction.
struct NotedSet final : wObject
{
    NotedSet(wClass const& objectClass, ZuTest::CallLog& sharedCalls, std::string setName)
        : wObject(objectClass), calls(sharedCalls), name(std::move(setName))
    {
    }

    static void End(wObject* object)
    {
        auto* const set = static_cast<NotedSet*>(object);
        set->calls.Add(set->name);
        delete set;
    }

    ZuTest::CallLog& calls;
    std::string const name;
};

wClass const NotedSet_Class{"NotedSet", &ZuCore::ResultSet_Class, NotedSet::End};
wClass const Stranger_Class{"Stranger", nullptr, NotedSet::End};

/// Adds a set and leaves the only reference to the dispatcher.
void AddNoted(ControlScanResultsDispatcher& dispatcher, ZuTest::CallLog& calls, std::string const& name)
{
    wHandle<NotedSet> const set(new NotedSet(NotedSet_Class, calls, name));
    dispatcher.AddResult(set.get());
}

} // namespace

TEST(ControlScanResultsDispatcher, ReleasesWhatCameLaterBeforeWhatWasInHandWhenItStops)
{
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&](void*) {
        calls.Add("called");
        ZU_THROW(-3, "handler"); // the dispatcher keeps the batch
    });
    AddNoted(dispatcher, calls, "in hand");
    ASSERT_TRUE(calls.WaitFor("called"));
    AddNoted(dispatcher, calls, "later");
    AddNoted(dispatcher, calls, "last");

    dispatcher.Stop();

    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"called", "later", "last", "in hand"}));
}

TEST(ControlScanResultsDispatcher, RefusesWhatIsNoResultSetAndTakesNoReferenceToIt)
{
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    wHandle<NotedSet> const stranger(new NotedSet(Stranger_Class, calls, "stranger"));

    EXPECT_EQ(RefusalOf([&] { dispatcher.AddResult(stranger.get()); }), (Refusal{-997, ""}));

    EXPECT_EQ(wObject_RefCount(stranger.get()), 1u);
}

TEST(ControlScanResultsDispatcher, CallsHandlersOnAThreadOfItsName)
{
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&](void*) {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof name);
        calls.Add(name);
    });
    auto const set = MakeSet({"a"});

    dispatcher.AddResult(set.get());

    EXPECT_TRUE(calls.WaitFor("CtrlScnRstDisp"));
}

TEST(ControlScanResultsDispatcher, CanStartOnceThereIsAThreadForIt)
{
    ZuTest::CallLog calls;
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&](void*) { calls.Add("called"); });
    dispatcher.Stop();
    {
        ZuTest::NoNewThreads const none;
        EXPECT_EQ(RefusalOf([&] { dispatcher.Start(); }), (Refusal{0, ""}));
        EXPECT_EQ(RefusalOf([] { ControlScanResultsDispatcher{nullptr}; }), (Refusal{0, ""}));
    }
    dispatcher.Stop(); // no thread to join

    dispatcher.Start();
    auto const set = MakeSet({"a"});
    dispatcher.AddResult(set.get());

    EXPECT_TRUE(calls.WaitFor("called"));
}

} // namespace ZuControl
