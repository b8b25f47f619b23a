#include "wApi/wLock.h"
#include "Support/SignalCounter.h"
#include "wApi/wStatus.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

using ZuTest::SignalCounter;

namespace
{

// The operations are called unpaired here on purpose: the analysis looks away.
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

    /// What an operation gives on another thread.
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

TEST_F(wLockTest, RefusesEverythingBeforeItIsMade)
{
    wLock empty;
    auto const enter = [&empty]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_Enter(empty); };
    auto const leave = [&empty]() ZU_NO_THREAD_SAFETY_ANALYSIS { return wLock_Exit(empty); };

    EXPECT_EQ(enter(), Zu::Status::WRONG_STATE);
    EXPECT_EQ(leave(), Zu::Status::WRONG_STATE);
}
