#include "ZuApi/Properties/Metric.h"

#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <thread>
#include <vector>

namespace Zu::Properties
{

using Json = nlohmann::json;
using ZuTest::RefusalOf;

TEST(Metric, CountsSetsAndRaises)
{
    Metric metric(Metric::Kind::COUNTER, "Requests");

    EXPECT_EQ(metric.Get(), 0u);
    metric.Add();
    metric.Add(4);
    EXPECT_EQ(metric.Get(), 5u);
    metric.Raise(3);
    EXPECT_EQ(metric.Get(), 5u);
    metric.Raise(9);
    EXPECT_EQ(metric.Get(), 9u);
    metric.Set(2);
    EXPECT_EQ(metric.Get(), 2u);
}

TEST(Metric, DescribesItself)
{
    Metric const counter(Metric::Kind::COUNTER, "Requests");
    Metric const gauge(Metric::Kind::GAUGE, "Clients now");

    EXPECT_EQ(JsonSerializer::SerializeSchema(counter),
              Json({{"type", "integer"}, {"kind", "counter"}, {"title", "Requests"}}));
    EXPECT_EQ(JsonSerializer::SerializeSchema(gauge),
              Json({{"type", "integer"}, {"kind", "gauge"}, {"title", "Clients now"}}));
}

TEST(Metric, IsReadAndWrittenLikeAnyNumber)
{
    Metric metric(Metric::Kind::GAUGE, "x");
    Metric other(Metric::Kind::GAUGE, "y");

    JsonSerializer::Deserialize(metric, 18446744073709551615u);
    EXPECT_EQ(JsonSerializer::Serialize(metric), 18446744073709551615u);

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(metric, -1); }).status, -997);
    EXPECT_THROW(JsonSerializer::Deserialize(metric, "text"), Json::type_error);
    other.CopyValues(metric);
    EXPECT_EQ(other.Get(), 18446744073709551615u);
}

TEST(Metric, LosesNothingThatManyThreadsCount)
{
    Metric counter(Metric::Kind::COUNTER, "x");
    Metric largest(Metric::Kind::GAUGE, "y");
    std::vector<std::thread> threads;
    for (uint64 i = 0; i < 4; ++i)
    {
        threads.emplace_back([&, i] {
            for (uint64 k = 0; k < 10000; ++k)
            {
                counter.Add();
                largest.Raise(4 * k + i);
                EXPECT_GE(largest.Get(), 4 * k + i);
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(counter.Get(), 40000u);
    EXPECT_EQ(largest.Get(), 39999u);
}

} // namespace Zu::Properties
