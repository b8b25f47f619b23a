#include "Host/Http/WorkerPool.h"

#include "Host/Http/IoLoop.h"
#include "Support/Latch.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ZuHost
{

namespace
{

using ZuTest::Latch;

constexpr uint64 PATIENCE_USEC = 30'000'000;
constexpr uint64 NOT_ON_DUTY = WorkerPool::THREADS - 1;

} // namespace

/// A pool whose duty is a loop that has no sockets: only what is posted to it.
class WorkerPoolTest : public testing::Test
{
protected:
    WorkerPoolTest()
    {
        pool->Start();
    }

    ~WorkerPoolTest() override
    {
        LetGo();
    }

    /// One that lives longer than the threads of the pool, which may still be about to leave it.
    Latch& MakeLatch()
    {
        return latches.emplace_back();
    }

    /// Ends all that is held.
    void LetGo()
    {
        finish.Open();
    }

    /// Has `work` run on duty and waits for it.
    void OnDuty(std::function<void()> const& work)
    {
        Latch& done = MakeLatch();
        loop.Post([&] {
            work();
            done.Open();
        });
        EXPECT_TRUE(done.Wait());
    }

    /// Waits until the thread on duty is or is not granted to do something aside.
    void AwaitGrant(bool isWanted)
    {
        uint64 const deadlineUsec = wTime_AfterUsec(PATIENCE_USEC);
        bool isGranted = !isWanted;
        while (isGranted != isWanted && wTime_NowUsec() < deadlineUsec)
        {
            OnDuty([&] { isGranted = WorkerPool::Aside(*pool).IsGranted(); });
        }
        EXPECT_EQ(isGranted, isWanted);
    }

    /// Has this many threads that are not on duty wait for the end.
    void HoldWorkers(uint64 count)
    {
        std::vector<Latch*> held;
        for (uint64 i = 0; i < count; ++i)
        {
            held.push_back(&MakeLatch());
            pool->Run([this, &one = *held.back()] {
                one.Open();
                EXPECT_TRUE(finish.Wait());
            });
        }
        for (Latch const* const one : held)
        {
            EXPECT_TRUE(one->Wait());
        }
    }

    std::list<Latch> latches;
    Latch finish;
    std::mutex countLock; // for what several threads count
    IoLoop loop;
    std::unique_ptr<WorkerPool> pool = std::make_unique<WorkerPool>(
        WorkerPool::Duty{[this] { loop.RunOne(wTIMEOUT_INFINITE); }, [this] { loop.Post([] {}); }});
};

TEST_F(WorkerPoolTest, RunsWhatIsGivenBesideTheDuty)
{
    Latch& ran = MakeLatch();
    bool isOnDuty = true;

    OnDuty([&] {
        EXPECT_TRUE(pool->IsOnDuty());
        pool->Run([&] {
            isOnDuty = pool->IsOnDuty();
            ran.Open();
        });
        EXPECT_TRUE(ran.Wait()); // by another thread, since this one is here
    });

    EXPECT_FALSE(isOnDuty);
    EXPECT_FALSE(pool->IsOnDuty());
}

TEST_F(WorkerPoolTest, RunsOnBehindWorkThatThrows)
{
    Latch& ran = MakeLatch();
    pool->Run([] { throw std::runtime_error("broken"); });
    loop.Post([] { throw std::runtime_error("broken"); });

    pool->Run([&ran] { ran.Open(); });

    EXPECT_TRUE(ran.Wait());
    OnDuty([] {});
}

TEST_F(WorkerPoolTest, HandsTheDutyOnWhenItIsHeldUp)
{
    AwaitGrant(true);
    Latch& entered = MakeLatch();
    Latch& left = MakeLatch();
    bool isStillOnDuty = true;
    loop.Post([&] {
        {
            WorkerPool::Aside const aside(*pool);
            EXPECT_TRUE(aside.IsGranted());
            entered.Open();
            EXPECT_TRUE(finish.Wait());
        }
        isStillOnDuty = pool->IsOnDuty();
        left.Open();
    });
    EXPECT_TRUE(entered.Wait());

    std::thread::id other;
    OnDuty([&] { other = std::this_thread::get_id(); }); // runs though the first has not come back
    LetGo();

    EXPECT_TRUE(left.Wait());
    EXPECT_FALSE(isStillOnDuty);
    OnDuty([&] { EXPECT_EQ(std::this_thread::get_id(), other) << "who was relieved does not come back by itself"; });
}

TEST_F(WorkerPoolTest, LeavesTheDutyWithAThreadThatIsSoonBack)
{
    AwaitGrant(true);
    bool isStillOnDuty = false;
    for (unsigned i = 0; i < 1000 && !isStillOnDuty; ++i) // on a busy machine even nothing takes long at times
    {
        AwaitGrant(true);
        OnDuty([&] {
            bool isGranted = false;
            {
                WorkerPool::Aside const aside(*pool);
                isGranted = aside.IsGranted();
            }
            isStillOnDuty = isGranted && pool->IsOnDuty();
        });
    }

    EXPECT_TRUE(isStillOnDuty);
}

TEST_F(WorkerPoolTest, TakesTheWatcherWhenAllOthersAreBusy)
{
    AwaitGrant(true);

    HoldWorkers(NOT_ON_DUTY);
    AwaitGrant(false);
    Latch& ran = MakeLatch();
    pool->Run([&ran] { ran.Open(); });
    OnDuty([] {}); // goes on all the same

    LetGo();
    EXPECT_TRUE(ran.Wait());
    AwaitGrant(true);
}

TEST_F(WorkerPoolTest, GrantsAsLongAsOneThreadIsLeftToWatch)
{
    HoldWorkers(NOT_ON_DUTY - 1);

    AwaitGrant(true);
}

TEST_F(WorkerPoolTest, LetsNoWorkWaitForAWatcherWhoseThreadOnDutyIsHeldUp)
{
    HoldWorkers(NOT_ON_DUTY - 1);
    AwaitGrant(true);
    Latch& entered = MakeLatch();
    Latch& back = MakeLatch();
    loop.Post([&] {
        WorkerPool::Aside const aside(*pool);
        entered.Open();
        EXPECT_TRUE(back.Wait());
    });
    EXPECT_TRUE(entered.Wait());

    Latch& ran = MakeLatch();
    pool->Run([&ran] { ran.Open(); });
    OnDuty([] {}); // the watcher has the duty now
    back.Open();

    EXPECT_TRUE(ran.Wait()) << "by the thread that was aside";
}

TEST_F(WorkerPoolTest, RunsWhatWasGivenBeforeItEnds)
{
    unsigned ran = 0;
    HoldWorkers(NOT_ON_DUTY);
    for (unsigned i = 0; i < 10; ++i)
    {
        pool->Run([&] {
            std::scoped_lock const guard(countLock);
            ++ran;
        });
    }

    LetGo();
    pool.reset();

    EXPECT_EQ(ran, 10U);
}

TEST_F(WorkerPoolTest, EndsAlsoWhileTheThreadOnDutyIsAside)
{
    AwaitGrant(true);
    WorkerPool& given = *pool;
    Latch& entered = MakeLatch();
    loop.Post([&] {
        WorkerPool::Aside const aside(given);
        entered.Open();
        EXPECT_TRUE(finish.Wait());
    });
    EXPECT_TRUE(entered.Wait());

    std::unique_ptr<WorkerPool> ending = std::move(pool);
    std::thread ender([&ending] { ending.reset(); });
    LetGo();
    ender.join();
}

TEST_F(WorkerPoolTest, EndsWithoutHavingBeenStarted)
{
    bool isWoken = false;
    {
        WorkerPool const idle({[] {}, [&isWoken] { isWoken = true; }});
    }

    EXPECT_TRUE(isWoken);
}

} // namespace ZuHost
