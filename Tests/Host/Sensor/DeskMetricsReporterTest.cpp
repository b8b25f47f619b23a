#include "Host/Sensor/DeskMetrics.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace ZuHost
{

TEST(DeskMetricsReporter, GivesTheSameRecordAsLastReport)
{
    DeskMetricsReporter reporter;

    EXPECT_EQ(&reporter.LastReport(), &reporter.Metrics());
}

TEST(DeskMetricsReporter, ReportsToItsHandlersUntilTheyAreRemoved)
{
    DeskMetricsReporter reporter(1000);
    std::promise<ZuCommon::IMetricsSource const*> reported;
    std::promise<void> second;
    int count = 0;

    auto const id = reporter.AddReportHandler([&](ZuCommon::IMetricsSource const& source) {
        if (++count == 1)
        {
            reported.set_value(&source);
        }
    });
    auto first = reported.get_future();
    ASSERT_EQ(first.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(first.get(), &reporter.Metrics());

    reporter.RemoveReportHandler(id);
    int const countAtRemoval = count; // the removal waits for a running report
    int later = 0;
    reporter.AddReportHandler([&](ZuCommon::IMetricsSource const&) {
        if (++later == 2)
        {
            second.set_value();
        }
    });
    ASSERT_EQ(second.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(count, countAtRemoval);
}

TEST(DeskMetricsReporter, DoesNotStoreAnEmptyHandler)
{
    DeskMetricsReporter reporter;

    EXPECT_FALSE(reporter.AddReportHandler({}).second);
}

} // namespace ZuHost
