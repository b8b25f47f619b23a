#include "Host/Http/RequestQueue.h"

#include "Support/Latch.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ZuHost
{

namespace
{

using ZuTest::Latch;

/// Threads that run an I/O context until the end of the test, and a queue that leaves one of these threads free.
class RequestQueueTest : public testing::Test
{
protected:
    static constexpr unsigned LIMIT = 2;

    RequestQueueTest()
    {
        for (unsigned i = 0; i <= LIMIT; ++i)
        {
            threads.emplace_back([this] { context.run(); });
        }
    }

    ~RequestQueueTest() override
    {
        End();
    }

    /// Runs the remaining work and joins the threads.
    void End()
    {
        keepsRunning.reset();
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        threads.clear();
    }

    boost::asio::io_context context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> keepsRunning{context.get_executor()};
    RequestQueue queue{context, LIMIT};
    std::vector<std::thread> threads;
};

} // namespace

TEST_F(RequestQueueTest, RunsUpToItsLimitSideBySideAndTheRestAfterwards)
{
    Latch finish;
    std::array<Latch, LIMIT> entered;
    std::atomic<unsigned> running = 0;
    std::atomic<unsigned> most = 0;
    std::atomic<unsigned> ended = 0;
    auto const work = [&](Latch* latch) {
        most = std::max(most.load(), ++running);
        if (latch != nullptr)
        {
            latch->Open();
        }
        EXPECT_TRUE(finish.Wait());
        --running;
        ++ended;
    };
    for (Latch& latch : entered)
    {
        queue.Run([&work, &latch] { work(&latch); });
    }
    for (Latch const& latch : entered)
    {
        EXPECT_TRUE(latch.Wait());
    }
    for (unsigned i = 0; i < 10; ++i)
    {
        queue.Run([&work] { work(nullptr); });
    }

    Latch served; // opened by the free thread
    boost::asio::post(context, [&served] { served.Open(); });
    EXPECT_TRUE(served.Wait());
    EXPECT_EQ(running, LIMIT);
    finish.Open();
    End();

    EXPECT_EQ(ended, LIMIT + 10);
    EXPECT_EQ(most, LIMIT);
}

TEST_F(RequestQueueTest, RunsTheRestInTheOrderOfArrival)
{
    std::vector<unsigned> order;
    Latch finish;
    Latch held;
    queue.Run([&] {
        held.Open();
        EXPECT_TRUE(finish.Wait());
    });
    EXPECT_TRUE(held.Wait()); // one thread serves what follows

    for (unsigned i = 0; i < 100; ++i)
    {
        queue.Run([&order, i] { order.push_back(i); });
    }
    Latch last;
    queue.Run([&last] { last.Open(); });
    EXPECT_TRUE(last.Wait());
    finish.Open();
    End();

    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST_F(RequestQueueTest, RunsWorkBesideTheWorkThatWaitsForIt)
{
    Latch second;
    bool hasRun = false;
    queue.Run([&] {
        queue.Run([&second] { second.Open(); });
        hasRun = second.Wait();
    });
    End();

    EXPECT_TRUE(hasRun);
}

TEST_F(RequestQueueTest, GoesOnBehindWorkThatThrows)
{
    bool hasRun = false;
    queue.Run([] { throw std::runtime_error("a resource that lets an exception out"); });
    queue.Run([] { throw 7; });
    queue.Run([&hasRun] { hasRun = true; });
    End();

    EXPECT_TRUE(hasRun);
}

TEST_F(RequestQueueTest, ReleasesWhatTheWorkHoldsWhenItHasEnded)
{
    auto kept = std::make_shared<int>(7);
    std::weak_ptr<int> const weak = kept;
    Latch held;
    Latch finish;
    bool isReleased = false;
    queue.Run([&] {
        held.Open();
        EXPECT_TRUE(finish.Wait());
    });
    EXPECT_TRUE(held.Wait()); // one thread serves what follows

    queue.Run([kept = std::move(kept)] {});
    queue.Run([&] {
        isReleased = weak.expired();
        finish.Open();
    });
    End();

    EXPECT_TRUE(isReleased);
}

} // namespace ZuHost
