#include "ZuCore/ResultHub.h"

#include "Support/AllocationCounter.h"
#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"
#include "wApi/wObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ZuCore
{

namespace
{

constexpr std::chrono::seconds BOUND{20};

wHandle<ResultSetObject> NewSet()
{
    ResultSet made = nullptr;
    EXPECT_EQ(ResultSet_Construct(&made, nullptr), Zu::Status::SUCCESS);
    return wHandle<ResultSetObject>(made);
}

} // namespace

TEST(ResultHub, SaysWhichRegistrationItWants)
{
    EXPECT_TRUE(ResultHub(true).ShouldUseSyncHandler());
    EXPECT_FALSE(ResultHub(false).ShouldUseSyncHandler());
}

TEST(ResultHub, CallsSyncHandlersInOrderOnThePublishingThread)
{
    ResultHub hub(true);
    std::vector<std::pair<char, std::thread::id>> calls;
    std::vector<void*> seen;
    for (char const name : {'a', 'b'})
    {
        hub.AddResultHandler([&, name](void* set) {
            calls.emplace_back(name, std::this_thread::get_id());
            seen.push_back(set);
        });
    }
    auto const set = NewSet();

    hub.Publish(set.get());
    hub.Publish(nullptr);

    auto const here = std::this_thread::get_id();
    EXPECT_EQ(calls, (std::vector<std::pair<char, std::thread::id>>{{'a', here}, {'b', here}}));
    EXPECT_EQ(seen, (std::vector<void*>{set.get(), set.get()}));
    EXPECT_EQ(wObject_RefCount(set.get()), 1U);
}

TEST(ResultHub, CallsAsyncHandlersOnAThreadOfItsOwnInOrderOfPublishing)
{
    ResultHub hub(false);
    std::vector<void*> seen;
    std::promise<std::thread::id> done;
    hub.AddAsyncResultHandler([&](void* set) {
        seen.push_back(set);
        if (seen.size() == 3)
        {
            done.set_value(std::this_thread::get_id());
        }
    });
    auto const first = NewSet();
    auto const second = NewSet();

    hub.Publish(first.get());
    hub.Publish(second.get());
    hub.Publish(first.get());

    auto worker = done.get_future();
    ASSERT_EQ(worker.wait_for(BOUND), std::future_status::ready);
    EXPECT_NE(worker.get(), std::this_thread::get_id());
    EXPECT_EQ(seen, (std::vector<void*>{first.get(), second.get(), first.get()}));
}

TEST(ResultHub, DoesNotStoreAnEmptyFunction)
{
    ResultHub hub(true);

    auto const sync = hub.AddResultHandler({});
    auto const async = hub.AddAsyncResultHandler({});

    EXPECT_FALSE(sync.second);
    EXPECT_FALSE(async.second);
    hub.RemoveResultHandler(sync);
    hub.RemoveAsyncResultHandler(async);
    hub.Publish(NewSet().get());
}

TEST(ResultHub, CallsARemovedHandlerNoMore)
{
    ResultHub hub(true);
    int first = 0;
    int second = 0;
    auto const id = hub.AddResultHandler([&](void*) { ++first; });
    hub.AddResultHandler([&](void*) { ++second; });

    hub.RemoveResultHandler(id);
    hub.RemoveResultHandler(id);
    hub.RemoveAsyncResultHandler(id);
    hub.Publish(NewSet().get());

    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(ResultHub, LetsAHandlerRemoveItselfAndOthersAndAddNewOnes)
{
    ResultHub hub(true);
    std::vector<int> calls;
    ResultHub::CallbackId own;
    ResultHub::CallbackId other;
    own = hub.AddResultHandler([&](void*) {
        calls.push_back(1);
        hub.RemoveResultHandler(own);
        hub.RemoveResultHandler(other);
        hub.AddResultHandler([&](void*) { calls.push_back(3); });
    });
    other = hub.AddResultHandler([&](void*) { calls.push_back(2); });

    hub.Publish(NewSet().get());
    EXPECT_EQ(calls, (std::vector<int>{1}));
    hub.Publish(NewSet().get());

    EXPECT_EQ(calls, (std::vector<int>{1, 3}));
}

TEST(ResultHub, WaitsInRemoveForACallOnAnotherThread)
{
    ResultHub hub(false);
    std::latch entered(1);
    std::latch removing(1);
    std::atomic<bool> ended{false};
    auto const id = hub.AddAsyncResultHandler([&](void*) {
        entered.count_down();
        removing.wait();
        ended = true;
    });

    hub.Publish(NewSet().get());
    entered.wait();
    removing.count_down();
    hub.RemoveAsyncResultHandler(id);

    EXPECT_TRUE(ended);
}

TEST(ResultHub, LogsWhatAHandlerThrowsAndGoesOn)
{
    ZuTest::LogRecorder log;
    ResultHub hub(true);
    int calls = 0;
    hub.AddResultHandler([](void*) { throw std::runtime_error("broken"); });
    hub.AddResultHandler([&](void*) { ++calls; });

    hub.Publish(NewSet().get());

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), 1U);
}

TEST(ResultHub, DropsTheOldestSetsWhenTooManyWait)
{
    ZuTest::LogRecorder log;
    std::latch entered(1);
    std::latch goOn(1);
    std::vector<void*> seen;
    std::promise<void> done;
    auto const blocking = NewSet();
    auto const dropped = NewSet();
    auto const kept = NewSet();
    auto const marker = NewSet();
    ResultHub hub(false);
    hub.AddAsyncResultHandler([&](void* set) {
        if (set == blocking.get())
        {
            entered.count_down();
            goOn.wait();
            return;
        }
        seen.push_back(set);
        if (set == marker.get())
        {
            done.set_value();
        }
    });

    hub.Publish(blocking.get());
    entered.wait();
    hub.Publish(dropped.get());
    hub.Publish(dropped.get());
    for (uint64 i = 0; i + 1 < ResultHub::MAX_PENDING_SETS; ++i)
    {
        hub.Publish(kept.get());
    }
    hub.Publish(marker.get());
    EXPECT_EQ(wObject_RefCount(dropped.get()), 1U);
    goOn.count_down();

    ASSERT_EQ(done.get_future().wait_for(BOUND), std::future_status::ready);
    EXPECT_EQ(hub.DroppedCount(), 2U);
    std::vector<void*> expected(ResultHub::MAX_PENDING_SETS - 1, kept.get());
    expected.push_back(marker.get());
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(log.CountOfText("Result handlers are too slow, result sets are dropped"), 1U);
}

TEST(ResultHub, ReleasesWhatStillWaitsWhenItGoes)
{
    auto const blocking = NewSet();
    auto const waiting = NewSet();
    std::latch entered(1);
    std::latch goOn(1);
    {
        ResultHub hub(false);
        hub.AddAsyncResultHandler([&](void* set) {
            if (set == blocking.get())
            {
                entered.count_down();
                goOn.wait();
            }
        });
        hub.Publish(blocking.get());
        entered.wait();
        hub.Publish(waiting.get());
        goOn.count_down();
    }

    EXPECT_EQ(wObject_RefCount(blocking.get()), 1U);
    EXPECT_EQ(wObject_RefCount(waiting.get()), 1U);
}

TEST(ResultHub, PublishesWithoutAnAllocation)
{
    ResultHub hub(true);
    uint64 calls = 0;
    hub.AddResultHandler([&](void*) { ++calls; });
    hub.AddAsyncResultHandler([](void*) {});
    auto const set = NewSet();

    ZuTest::AllocationCounter const counter;
    for (int i = 0; i < 100; ++i)
    {
        hub.Publish(set.get());
    }

    EXPECT_EQ(counter.Count(), 0U);
    EXPECT_EQ(calls, 100U);
}

TEST(ResultHub, TakesAdditionsAndRemovalsWhileItPublishes)
{
    ResultHub hub(true);
    std::atomic<bool> stop{false};
    std::thread publisher([&] {
        auto const set = NewSet();
        while (!stop)
        {
            hub.Publish(set.get());
        }
    });

    std::atomic<bool> removed{false};
    for (int i = 0; i < 200; ++i)
    {
        removed = false;
        auto const sync = hub.AddResultHandler([&](void*) { EXPECT_FALSE(removed); });
        auto const async = hub.AddAsyncResultHandler([&](void*) { EXPECT_FALSE(removed); });
        hub.RemoveResultHandler(sync);
        hub.RemoveAsyncResultHandler(async);
        removed = true;
    }

    stop = true;
    publisher.join();
}

} // namespace ZuCore
