#include "Host/Sensor/SimulatedPart.h"

#include "Host/Sensor/Measurements.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ZuHost
{

namespace
{

ProfileTool::Results MeasureAt(SimulatedPart& part, uint64 frame)
{
    return ProfileTool().Measure(*part.ProfileAt(frame));
}

// Eight points a millimetre. Lower step: 60 mm of points, both ends included. With the upper step: 80 points at 10 mm
// on either side, 129 at 25 mm on either side of the slot. Belt: 20 mm of points.
ProfileTool::Results const LOWER{{{10, 1}, {10, 1}, {60, 1}, {10, 1}, {481, 1}}};
ProfileTool::Results const BOTH{{{25, 1}, {10, 1}, {60, 1}, {8050.0 / 418, 1}, {418, 1}}};
ProfileTool::Results const BELT{{{0, 1}, {0, 1}, {20, 1}, {0, 1}, {161, 1}}};

} // namespace

TEST(SimulatedPart, HasAnExactValueForEachMeasurementInEachFrame)
{
    SimulatedPart part;

    for (uint64 frame = 0; frame < 3 * 200; ++frame)
    {
        uint64 const phase = frame % 200;
        ASSERT_EQ(MeasureAt(part, frame), phase < 80 ? LOWER : phase < 160 ? BOTH : BELT) << frame;
    }
}

TEST(SimulatedPart, ShowsBothStepsInEachFrameWhenTheConveyorStandsStill)
{
    SimulatedPart part(SimulatedPart::Conveyor::STANDS_STILL);

    for (uint64 frame = 0; frame < 2 * 200; ++frame)
    {
        ASSERT_EQ(MeasureAt(part, frame), BOTH) << frame;
    }
}

TEST(SimulatedPart, ShowsTheSlotAsAGapInTheLine)
{
    SimulatedPart part;

    SharedProfile const shared = part.ProfileAt(100);
    ProfileView const profile = *shared;

    EXPECT_TRUE(
        std::none_of(profile.begin(), profile.end(), [](ProfilePoint const& point) { return std::abs(point.x) < 4; }));
    EXPECT_TRUE(std::find(profile.begin(), profile.end(), ProfilePoint{4, 25}) != profile.end());
    EXPECT_TRUE(std::find(profile.begin(), profile.end(), ProfilePoint{-4, 25}) != profile.end());
    EXPECT_TRUE(std::find(profile.begin(), profile.end(), ProfilePoint{20, 25}) != profile.end());
    EXPECT_TRUE(std::find(profile.begin(), profile.end(), ProfilePoint{20.125, 10}) != profile.end());
}

TEST(SimulatedPart, IsNoisyOnlyWhenAskedFor)
{
    double const deviation = 0.1;
    SimulatedPart part(deviation, 7);
    double sum = 0;
    double sumOfSquares = 0;
    double count = 0;

    for (uint64 frame = 0; frame < 80; ++frame)
    {
        SharedProfile const profile = part.ProfileAt(frame);
        for (ProfilePoint const& point : *profile)
        {
            double const error = point.z - 10;
            sum += error;
            sumOfSquares += error * error;
            ++count;
        }
    }

    EXPECT_EQ(count, 80 * 481);
    EXPECT_NEAR(sum / count, 0, 0.005);
    EXPECT_NEAR(std::sqrt(sumOfSquares / count), deviation, 0.005);
}

TEST(SimulatedPart, GivesTheSameNoiseForTheSameSeed)
{
    SimulatedPart one(0.1, 7);
    SimulatedPart same(0.1, 7);
    SimulatedPart other(0.1, 8);

    double const first = one.ProfileAt(0)->at(0).z;

    EXPECT_EQ(first, same.ProfileAt(0)->at(0).z);
    EXPECT_NE(first, other.ProfileAt(0)->at(0).z);
}

TEST(SimulatedPart, RefusesANoiseThatIsNoDeviation)
{
    EXPECT_THROW(SimulatedPart{-0.1}, Zu::Exception);
    EXPECT_THROW(SimulatedPart{std::numeric_limits<double>::quiet_NaN()}, Zu::Exception);
}

} // namespace ZuHost
