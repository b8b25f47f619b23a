#include "ZuControl/Control/LastDelivery.h"

#include "Support/TestFrames.h"
#include "ZuCore/DataSourceHash.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace ZuControl
{

using ZuTest::TestFrame;

constexpr wStamp STAMP{1, 2, 3, 4, 5};

TEST(LastDelivery, IsEmptyBeforeTheFirstSet)
{
    LastDelivery::Content const content = LastDelivery().Read();

    EXPECT_EQ(content.usec, 0u);
    EXPECT_FALSE(content.stamp.has_value());
    EXPECT_TRUE(content.measurements.empty());
}

TEST(LastDelivery, HasStampAndMeasurementsOfTheNewestSetAlone)
{
    LastDelivery delivery;
    delivery.Take(*TestFrame().Stamp("stamp", {}).Measurement("old", 1).Set(), 10);

    delivery.Take(*TestFrame().Measurement("a", 2.5, 0).Stamp("stamp", STAMP).Null("null").Measurement("b", -1).Set(),
                  20);

    LastDelivery::Content const content = delivery.Read();
    EXPECT_EQ(content.usec, 20u);
    EXPECT_EQ(content.stamp, STAMP);
    ASSERT_EQ(content.measurements.size(), 2u);
    EXPECT_EQ(content.measurements[0].dataSource, ZuCore::DataSourceHash("a"));
    EXPECT_EQ(content.measurements[0].value, 2.5);
    EXPECT_EQ(content.measurements[0].decision, 0);
    EXPECT_EQ(content.measurements[1].dataSource, ZuCore::DataSourceHash("b"));
    EXPECT_EQ(content.measurements[1].value, -1);
    EXPECT_EQ(content.measurements[1].decision, 1);
}

TEST(LastDelivery, HasNoStampOfAProtocolThatDoesNotWantIt)
{
    LastDelivery delivery;
    delivery.Take(*TestFrame().Stamp("stamp", STAMP).Set(), 10);

    delivery.Take(*TestFrame().Measurement("a", 1).Set(), 20);

    EXPECT_FALSE(delivery.Read().stamp.has_value());
}

TEST(LastDelivery, KeepsNoMessageAlive)
{
    LastDelivery delivery;
    TestFrame const frame = std::move(TestFrame().Measurement("a", 1));

    delivery.Take(*frame.Set(), 10);

    EXPECT_EQ(wObject_RefCount(frame.Set()), 1u);
    EXPECT_EQ(wObject_RefCount(ZuCore::ResultItem_MsgInfo(frame.First())), 1u);
}

TEST(LastDelivery, IsReadWhole)
{
    LastDelivery delivery;
    std::atomic<bool> isReading{false};
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        while (!isReading)
        {
            std::this_thread::yield();
        }
        for (uint64 i = 1; i <= 1000; ++i)
        {
            double const value = static_cast<double>(i);
            delivery.Take(*TestFrame().Measurement("a", value).Measurement("b", value).Set(), i);
        }
        isDone = true;
    });

    while (!isDone)
    {
        LastDelivery::Content const content = delivery.Read();
        isReading = true;
        for (auto const& measurement : content.measurements)
        {
            ASSERT_EQ(measurement.value, static_cast<double>(content.usec));
        }
    }
    writer.join();
    EXPECT_EQ(delivery.Read().usec, 1000u);
}

} // namespace ZuControl
