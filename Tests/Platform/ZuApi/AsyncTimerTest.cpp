#include "ZuApi/AsyncTimer.h"

#include "Support/RecordingSink.h"
#include "Support/SignalCounter.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

using ZuTest::LogRecorder;
using ZuTest::SignalCounter;

namespace Zu
{

namespace
{

constexpr uint64 SHORT_USEC = 1'000;
constexpr uint64 LONG_USEC = 3'600'000'000; // longer than any test

} // namespace

TEST(AsyncTimer, TicksAgainAndAgainOnAThreadOfItsOwn)
{
    SignalCounter ticks;
    std::atomic<bool> foreign{true};
    AsyncTimer* seen = nullptr;
    auto const here = std::this_thread::get_id();
    AsyncTimer timer([&](AsyncTimer& ticking) {
        foreign = foreign && std::this_thread::get_id() != here;
        seen = &ticking;
        ticks.Signal();
    });
    uint64 const begun = wTime_NowUsec();

    timer.Start(SHORT_USEC, false);
    ASSERT_TRUE(ticks.Wait(3));
    uint64 const passed = wTime_NowUsec() - begun;
    timer.Stop();

    EXPECT_GE(passed, 3 * SHORT_USEC);
    EXPECT_TRUE(foreign);
    EXPECT_EQ(seen, &timer);
}

TEST(AsyncTimer, StandsStillUntilItIsStarted)
{
    std::atomic<int> ticks{0};
    {
        AsyncTimer const timer([&](AsyncTimer&) { ++ticks; });
    }

    EXPECT_EQ(ticks, 0);
}

TEST(AsyncTimer, TicksAtOnceWhenAskedTo)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer&) { ticks.Signal(); });

    timer.Start(LONG_USEC, true);

    EXPECT_TRUE(ticks.Wait());
}

TEST(AsyncTimer, IsStartedAgainAfterAStop)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer&) { ticks.Signal(); });
    timer.Start(SHORT_USEC, false);
    ASSERT_TRUE(ticks.Wait(1));
    timer.Stop();
    timer.Stop();
    uint64 const before = ticks.Count();

    timer.Start(SHORT_USEC, false);

    EXPECT_TRUE(ticks.Wait(before + 2));
}

TEST(AsyncTimer, GoesOnWithTheNewInterval)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer&) { ticks.Signal(); });
    timer.Start(LONG_USEC, false);

    timer.Start(SHORT_USEC, false);

    EXPECT_TRUE(ticks.Wait(2));
}

TEST(AsyncTimer, WaitsInAStopForTheCallbackThatRuns)
{
    SignalCounter begun;
    SignalCounter opened;
    std::atomic<bool> ended{false};
    AsyncTimer timer([&](AsyncTimer&) {
        begun.Signal();
        EXPECT_TRUE(opened.Wait());
        ended = true;
    });
    timer.Start(LONG_USEC, true);
    ASSERT_TRUE(begun.Wait());

    std::thread opener([&opened] { opened.Signal(); });
    timer.Stop();

    EXPECT_TRUE(ended);
    opener.join();
}

TEST(AsyncTimer, DoesNotTickBehindAStop)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer&) { ticks.Signal(); });
    AsyncTimer marker([&](AsyncTimer&) { ticks.Signal(); });
    timer.Start(SHORT_USEC, false);
    ASSERT_TRUE(ticks.Wait(2));

    timer.Stop();
    uint64 const after = ticks.Count();
    marker.Start(20 * SHORT_USEC, false); // later than any remaining tick
    ASSERT_TRUE(ticks.Wait(after + 1));
    marker.Stop();

    EXPECT_EQ(ticks.Count(), after + 1);
}

TEST(AsyncTimer, MayBeStoppedByItsCallback)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer& ticking) {
        ticking.Stop();
        ticks.Signal();
    });

    timer.Start(SHORT_USEC, false);
    ASSERT_TRUE(ticks.Wait());
    timer.Stop(); // waits for the callback, so the count is final

    EXPECT_EQ(ticks.Count(), 1u);
}

TEST(AsyncTimer, MayBeRestartedByItsCallback)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer& ticking) {
        ticking.Start(SHORT_USEC, false);
        ticks.Signal();
    });

    timer.Start(LONG_USEC, true);

    EXPECT_TRUE(ticks.Wait(3));
}

TEST(AsyncTimer, SurvivesACallbackThatThrows)
{
    LogRecorder const log;
    SignalCounter ticks;
    {
        AsyncTimer timer([&](AsyncTimer&) {
            ticks.Signal();
            throw std::runtime_error("not now");
        });
        timer.Start(SHORT_USEC, false);
        EXPECT_TRUE(ticks.Wait(3));
    }

    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), ticks.Count());
}

TEST(AsyncTimer, LeavesOutTheTicksThatASlowCallbackMisses)
{
    constexpr uint64 SLOW_USEC = 20 * SHORT_USEC;
    std::atomic<uint64> ticks{0};
    SignalCounter slow;
    AsyncTimer timer([&](AsyncTimer&) {
        if (++ticks == 1)
        {
            uint64 const end = wTime_AfterUsec(SLOW_USEC);
            while (wTime_NowUsec() < end)
            {
                std::this_thread::yield();
            }
            slow.Signal();
        }
    });
    uint64 const begun = wTime_NowUsec();

    timer.Start(SHORT_USEC, false);
    ASSERT_TRUE(slow.Wait());
    timer.Stop();
    uint64 const passed = wTime_NowUsec() - begun;

    EXPECT_LE(ticks, 2 + (passed - SLOW_USEC) / SHORT_USEC);
}

TEST(AsyncTimer, MayBeEndedByItsCallback)
{
    SignalCounter ended;
    auto timer = std::make_shared<std::unique_ptr<AsyncTimer>>();
    *timer = std::make_unique<AsyncTimer>([timer, &ended](AsyncTimer&) {
        timer->reset();
        ended.Signal();
    });

    (*timer)->Start(LONG_USEC, true);

    EXPECT_TRUE(ended.Wait());
}

TEST(AsyncTimer, RefusesNoFunctionAndNoInterval)
{
    SignalCounter ticks;
    AsyncTimer timer([&](AsyncTimer&) { ticks.Signal(); });
    auto const statusOf = [](auto operation) {
        try
        {
            operation();
            return Status::SUCCESS;
        }
        catch (Exception const& exception)
        {
            return exception.Status();
        }
    };

    EXPECT_EQ(statusOf([&] { timer.Start(0, false); }), Status::BAD_ARGUMENT);
    EXPECT_EQ(statusOf([] { AsyncTimer empty({}); }), Status::BAD_ARGUMENT);

    EXPECT_EQ(ticks.Count(), 0u);
}

} // namespace Zu
