#include "ZuApi/Threads/Locker.h"

#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using ZuTest::LogRecorder;

namespace Zu
{

class LockerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(wLock_Construct(&lock, nullptr), Status::SUCCESS);
    }

    /// Whether another thread gets the lock at once.
    bool IsFree()
    {
        bool taken = false;
        std::thread([&]() ZU_NO_THREAD_SAFETY_ANALYSIS {
            taken = wLock_EnterEx(lock, 0) == Status::SUCCESS && wLock_Exit(lock) == Status::SUCCESS;
        }).join();
        return taken;
    }

    wLock lock;
};

TEST_F(LockerTest, HoldsTheLockToTheEndOfTheScope)
{
    {
        Locker const guard(lock);
        EXPECT_FALSE(IsFree());
    }

    EXPECT_TRUE(IsFree());
}

TEST_F(LockerTest, MayBeNested)
{
    {
        Locker const outer(lock);
        [this]() ZU_NO_THREAD_SAFETY_ANALYSIS { Locker const inner(lock, 0); }();
        EXPECT_FALSE(IsFree());
    }

    EXPECT_TRUE(IsFree());
}

TEST_F(LockerTest, ThrowsTheStatusOfAnEntryThatFails)
{
    Locker const guard(lock);

    std::thread([this]() ZU_NO_THREAD_SAFETY_ANALYSIS {
        try
        {
            Locker const other(lock, 1'000);
            ADD_FAILURE() << "entered a lock that is held";
        }
        catch (Exception const& exception)
        {
            EXPECT_EQ(exception.Status(), Status::TIME_OUT);
            EXPECT_STREQ(exception.what(), "");
            EXPECT_STREQ(exception.Function(), "Zu::Locker::Locker");
        }
    }).join();

    EXPECT_FALSE(IsFree());
}

TEST_F(LockerTest, ThrowsForALockThatWasNeverMade)
{
    wLock empty;

    try
    {
        Locker const guard(empty);
        ADD_FAILURE() << "entered a lock that is not there";
    }
    catch (Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Status::WRONG_STATE);
        EXPECT_STREQ(exception.Function(), "Zu::Locker::Locker");
    }
}

TEST_F(LockerTest, LogsAnExitThatFails)
{
    LogRecorder const log;

    [this]() ZU_NO_THREAD_SAFETY_ANALYSIS {
        Locker const guard(lock);
        ASSERT_EQ(wLock_Exit(lock), Status::SUCCESS);
    }();

    auto const lines = log.Lines();
    ASSERT_EQ(lines.size(), 3u); // then log entry and back trace
    EXPECT_EQ(lines[0].text, "Exception thrown in destructor");
    EXPECT_THAT(lines[0].label, testing::HasSubstr("Zu::Locker::~Locker"));
    EXPECT_TRUE(ZuTest::IsTrace(lines[1]));
    EXPECT_TRUE(ZuTest::IsTrace(lines[2]));
    EXPECT_TRUE(IsFree());
}

} // namespace Zu
