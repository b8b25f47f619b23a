#include "wApi/wMutex.h"

#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <thread>

namespace Zu
{

namespace
{

constexpr uint64 PATIENCE_USEC = 30'000'000;

} // namespace

TEST(Mutex, LetsOneThreadAtATimeIn)
{
    Mutex mutex;
    int sum = 0;
    auto const work = [&] {
        for (int i = 0; i < 10'000; ++i)
        {
            MutexLock const guard(mutex);
            ++sum;
        }
    };

    std::thread other(work);
    work();
    other.join();

    EXPECT_EQ(sum, 20'000);
}

TEST(MutexLock, GivesTheLockBackInBetween)
{
    Mutex mutex;
    bool wasFree = false;
    MutexLock guard(mutex);

    guard.Unlock();
    std::thread([&] {
        MutexLock const other(mutex); // would hang here
        wasFree = true;
    }).join();
    guard.Lock();

    EXPECT_TRUE(wasFree);
}

TEST(RecursiveMutex, IsTakenAgainByItsThreadAndFreeForOthersBehindTheLastExit)
{
    RecursiveMutex mutex;
    bool wasFree = false;
    auto const comeBack = [&mutex] { MutexLock const inner(mutex); };
    {
        MutexLock const outer(mutex);
        comeBack(); // would hang here
    }

    std::thread([&] {
        MutexLock const guard(mutex);
        wasFree = true;
    }).join();

    EXPECT_TRUE(wasFree);
}

TEST(CondVar, WaitsUntilThePredicateHolds)
{
    Mutex mutex;
    CondVar changed;
    int steps = 0;
    std::thread other([&] {
        for (int i = 0; i < 3; ++i)
        {
            MutexLock const guard(mutex);
            ++steps;
            changed.NotifyOne();
        }
    });

    {
        MutexLock const guard(mutex);
        changed.Wait(mutex, [&]() ZU_REQUIRES(mutex) { return steps == 3; });
        EXPECT_EQ(steps, 3);
    }
    other.join();
}

TEST(CondVar, WakesAllThatWait)
{
    Mutex mutex;
    CondVar changed;
    bool isOpen = false;
    int passed = 0;
    auto const pass = [&] {
        MutexLock const guard(mutex);
        EXPECT_TRUE(
            changed.WaitUntil(mutex, wTime_AfterUsec(PATIENCE_USEC), [&]() ZU_REQUIRES(mutex) { return isOpen; }));
        ++passed;
    };
    std::thread first(pass);
    std::thread second(pass);

    {
        MutexLock const guard(mutex);
        isOpen = true;
    }
    changed.NotifyAll();
    first.join();
    second.join();

    EXPECT_EQ(passed, 2);
}

TEST(CondVar, EndsATimedWaitAtItsMomentWithTheLastAnswer)
{
    Mutex mutex;
    CondVar changed;
    MutexLock const guard(mutex);
    uint64 const deadlineUsec = wTime_NowUsec() + 1000;

    EXPECT_FALSE(changed.WaitUntil(mutex, deadlineUsec, [] { return false; }));

    EXPECT_GE(wTime_NowUsec(), deadlineUsec);
}

TEST(CondVar, AsksThePredicateOnceWhenTheMomentHasPassed)
{
    Mutex mutex;
    CondVar changed;
    MutexLock const guard(mutex);
    int questions = 0;

    EXPECT_TRUE(changed.WaitUntil(mutex, 0, [&] { return ++questions == 1; }));

    EXPECT_EQ(questions, 1);
}

} // namespace Zu
