#include "wApi/wLock.h"
#include "Support/AdvancedCalendar.h"
#include "Support/SignalCounter.h"
#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

using ZuTest::SignalCounter;

namespace
{

// The test calls the operations unpaired on purpose, so the thread-safety analysis is switched off.
class wLockTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(wLock_Construct(&lock, nullptr), Zu::Status::SUCCESS);
    }

    wStatus Enter(uint64 timeoutUsec) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        return wLock_EnterEx(lock, timeoutUsec);
    }

    wStatus EnterForEver() ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        return wLock_Enter(lock);
    }

    wStatus Exit() ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        return wLock_Exit(lock);
    }

    /// Runs an operation on another thread and returns its status.
    static wStatus OnAnotherThread(std::function<wStatus()> operation)
    {
        wStatus status = Zu::Status::FAILURE;
        std::thread([&] { status = operation(); }).join();
        return status;
    }

    wLock lock;
};

} // namespace

TEST_F(wLockTest, IsMadeOnce)
{
    EXPECT_EQ(wLock_Construct(&lock, nullptr), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wLock_Construct(nullptr, nullptr), Zu::Status::BAD_ARGUMENT);
}

TEST_F(wLockTest, IsTakenAgainByItsOwner)
{
    EXPECT_EQ(EnterForEver(), Zu::Status::SUCCESS);
    EXPECT_EQ(Enter(0), Zu::Status::SUCCESS);

    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
    EXPECT_EQ(OnAnotherThread([this] { return Enter(0); }), Zu::Status::TIME_OUT);
    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);

    EXPECT_EQ(OnAnotherThread([this] { return Enter(0) == 1 ? Exit() : Zu::Status::FAILURE; }), Zu::Status::SUCCESS);
}

TEST_F(wLockTest, RefusesTheExitOfAStranger)
{
    ASSERT_EQ(EnterForEver(), Zu::Status::SUCCESS);

    EXPECT_EQ(OnAnotherThread([this] { return Exit(); }), Zu::Status::WRONG_STATE);

    EXPECT_EQ(OnAnotherThread([this] { return Enter(0); }), Zu::Status::TIME_OUT);
    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
    EXPECT_EQ(Exit(), Zu::Status::WRONG_STATE);
}

TEST_F(wLockTest, GivesUpWhenTheTimeHasPassed)
{
    ASSERT_EQ(EnterForEver(), Zu::Status::SUCCESS);

    EXPECT_EQ(OnAnotherThread([this] { return Enter(10'000); }), Zu::Status::TIME_OUT);

    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
}

TEST_F(wLockTest, GivesUpInTimeWhenTheClockIsSetBack)
{
    ZuTest::AdvancedCalendar const calendar(20);
    ASSERT_EQ(EnterForEver(), Zu::Status::SUCCESS);
    uint64 const beginUsec = wTime_NowUsec();

    EXPECT_EQ(OnAnotherThread([this] { return Enter(10'000); }), Zu::Status::TIME_OUT);

    uint64 const passedUsec = wTime_NowUsec() - beginUsec;
    EXPECT_GE(passedUsec, 10'000u);
    EXPECT_LT(passedUsec, 10'000'000u);
    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
}

TEST_F(wLockTest, IsGivenToWhoWaits)
{
    ASSERT_EQ(EnterForEver(), Zu::Status::SUCCESS);
    SignalCounter begun;
    wStatus taken = Zu::Status::FAILURE;
    std::thread other([&] {
        begun.Signal();
        taken = Enter(wTIMEOUT_INFINITE - 1);
        static_cast<void>(Exit());
    });

    ASSERT_TRUE(begun.Wait());
    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
    other.join();

    EXPECT_EQ(taken, Zu::Status::SUCCESS);
}

TEST_F(wLockTest, IsPassedOnAmongThreadsWithAndWithoutALimit)
{
    constexpr uint64 ROUNDS = 20'000;
    constexpr uint64 LIMIT_USEC = 60'000'000; // a lost wake-up makes the wait last this long
    constexpr uint64 TIMEOUTS[] = {LIMIT_USEC, LIMIT_USEC, LIMIT_USEC, wTIMEOUT_INFINITE};
    uint64 const beginUsec = wTime_NowUsec();
    uint64 count = 0;
    std::vector<std::thread> threads;
    for (uint64 const timeoutUsec : TIMEOUTS)
    {
        threads.emplace_back([this, &count, timeoutUsec] {
            for (uint64 round = 0; round < ROUNDS; ++round)
            {
                ASSERT_EQ(Enter(timeoutUsec), Zu::Status::SUCCESS);
                ++count;
                ASSERT_EQ(Exit(), Zu::Status::SUCCESS);
            }
        });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(count, ROUNDS * std::size(TIMEOUTS));
    EXPECT_LT(wTime_NowUsec() - beginUsec, LIMIT_USEC);
}

TEST_F(wLockTest, IsGivenToAWaitOnEachOfTwoLocks)
{
    wLock second;
    ASSERT_EQ(wLock_Construct(&second, nullptr), Zu::Status::SUCCESS);
    auto const enterSecond = [&second]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_EnterEx(second, 60'000'000); };
    auto const leaveSecond = [&second]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_Exit(second); };
    ASSERT_EQ(EnterForEver(), Zu::Status::SUCCESS);
    ASSERT_EQ(enterSecond(), Zu::Status::SUCCESS);
    SignalCounter taken;
    std::thread first([&] {
        EXPECT_EQ(Enter(60'000'000), Zu::Status::SUCCESS);
        taken.Signal();
        EXPECT_EQ(Exit(), Zu::Status::SUCCESS);
    });
    std::thread other([&] {
        EXPECT_EQ(enterSecond(), Zu::Status::SUCCESS);
        taken.Signal();
        EXPECT_EQ(leaveSecond(), Zu::Status::SUCCESS);
    });

    EXPECT_EQ(leaveSecond(), Zu::Status::SUCCESS);
    EXPECT_TRUE(taken.Wait(1));
    EXPECT_EQ(Exit(), Zu::Status::SUCCESS);

    EXPECT_TRUE(taken.Wait(2));
    first.join();
    other.join();
}

TEST_F(wLockTest, RefusesEverythingBeforeItIsMade)
{
    wLock empty;
    auto const enter = [&empty]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_Enter(empty); };
    auto const leave = [&empty]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_Exit(empty); };

    EXPECT_EQ(enter(), Zu::Status::WRONG_STATE);
    EXPECT_EQ(leave(), Zu::Status::WRONG_STATE);
}
