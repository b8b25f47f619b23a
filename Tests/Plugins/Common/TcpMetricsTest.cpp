#include "Plugins/Common/TcpMetrics.h"
#include "Tests/Plugins/Common/Number.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace PluginCommon
{

using Zu::Properties::JsonSerializer;

class CounterMetricsTest : public testing::Test
{
protected:
    CounterMetricsTest()
    {
        metrics.AddCounter("second", "A counter", counter);
        metrics.AddGauge("first", "A gauge", gauge);
    }

    TcpCounters::Counter counter{0};
    TcpCounters::Counter gauge{0};
    CounterMetrics metrics;
};

TEST_F(CounterMetricsTest, ShowsTheCountersInTheOrderOfTheTable)
{
    Count(counter, 3);
    gauge = 7;

    metrics.Show();

    EXPECT_EQ(metrics.KeyAt(0), "second");
    EXPECT_EQ(metrics.KeyAt(1), "first");
    EXPECT_EQ(Number(metrics, "second"), 3u);
    EXPECT_EQ(Number(metrics, "first"), 7u);
}

TEST_F(CounterMetricsTest, CountsFromAResetOnAndLeavesTheGaugesAlone)
{
    Count(counter, 3);
    gauge = 7;
    metrics.Reset();
    Count(counter, 2);

    metrics.Show();

    EXPECT_EQ(Number(metrics, "second"), 2u);
    EXPECT_EQ(Number(metrics, "first"), 7u);
}

TEST_F(CounterMetricsTest, CountsOnFromLoadedNumbers)
{
    Count(counter, 3);
    JsonSerializer::Deserialize(metrics, {{"second", 100}, {"first", 50}});

    metrics.Resume();

    Count(counter, 2);
    gauge = 7;
    metrics.Show();
    EXPECT_EQ(Number(metrics, "second"), 102u);
    EXPECT_EQ(Number(metrics, "first"), 7u);
}

TEST_F(CounterMetricsTest, DescribesKindAndTitle)
{
    auto const properties = JsonSerializer::SerializeSchema(metrics).at("properties");

    EXPECT_EQ(properties.at("second").at("title"), "A counter");
    EXPECT_EQ(properties.at("second").at("kind"), "counter");
    EXPECT_EQ(properties.at("first").at("kind"), "gauge");
}

TEST(TcpCounters, KeepTheLastAndTheLongestTimeOfARequest)
{
    TcpCounters counters;

    counters.NoteHandling(5);
    counters.NoteHandling(9);
    counters.NoteHandling(2);

    EXPECT_EQ(counters.lastHandlingUsec, 2u);
    EXPECT_EQ(counters.largestHandlingUsec, 9u);
}

} // namespace PluginCommon
