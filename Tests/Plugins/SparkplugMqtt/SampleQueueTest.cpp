#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "Support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <vector>

namespace SparkplugMqtt
{

using Bytes = std::vector<uint8>;

TEST(SampleQueue, GivesTheSamplesInTheirOrder)
{
    int wakes = 0;
    SampleQueue queue([&wakes] { ++wakes; });
    queue.Push(1, Bytes{1, 2});
    queue.Push(2, Bytes{});
    EXPECT_EQ(wakes, 2);
    Sample sample;
    ASSERT_TRUE(queue.Take(sample));
    EXPECT_EQ(sample.layout, 1U);
    EXPECT_EQ(sample.metrics, (Bytes{1, 2}));
    ASSERT_TRUE(queue.Take(sample));
    EXPECT_EQ(sample.layout, 2U);
    EXPECT_EQ(sample.metrics, Bytes{});
    EXPECT_FALSE(queue.Take(sample));
}

TEST(SampleQueue, DropsTheOldestWhenItIsFull)
{
    SampleQueue queue([] {});
    for (uint64 layout = 0; layout < SampleQueue::CAPACITY + 3; ++layout)
    {
        queue.Push(layout, {});
    }
    EXPECT_EQ(queue.DroppedCount(), 3U);
    Sample sample;
    for (uint64 layout = 3; layout < SampleQueue::CAPACITY + 3; ++layout)
    {
        ASSERT_TRUE(queue.Take(sample));
        EXPECT_EQ(sample.layout, layout);
    }
    EXPECT_FALSE(queue.Take(sample));
}

TEST(SampleQueue, AllocatesNothingInSteadyState)
{
    SampleQueue queue([] {});
    Bytes const bytes(200, 7);
    Sample sample;
    for (std::size_t i = 0; i < 2 * SampleQueue::CAPACITY; ++i)
    {
        queue.Push(1, bytes);
        queue.Take(sample);
    }
    ZuTest::AllocationCounter const counter;
    for (std::size_t i = 0; i < 2 * SampleQueue::CAPACITY; ++i)
    {
        queue.Push(1, bytes);
        queue.Take(sample);
    }
    EXPECT_EQ(counter.Count(), 0U);
}

} // namespace SparkplugMqtt
