#include "Host/Sensor/Measurements.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(ProfileTool, MeasuresHeightWidthMeanAndPoints)
{
    Profile const profile{{-1.5, 2}, {3, -7}, {0.25, 8.5}};

    ProfileTool::Results const results = ProfileTool().Measure(profile);

    EXPECT_EQ(results, (ProfileTool::Results{{{8.5, 1}, {-7, 1}, {4.5, 1}, {3.5 / 3, 1}, {3, 1}}}));
}

TEST(ProfileTool, SumsTheMeanInTheOrderOfThePoints)
{
    // The result depends on the order of the sum, because 1e16 + 1 is rounded to 1e16.
    Profile const smallLast{{0, 1e16}, {0, 1}, {0, 1}};
    Profile const smallFirst{{0, 1}, {0, 1}, {0, 1e16}};

    EXPECT_EQ(ProfileTool().Measure(smallLast)[3].value, 1e16 / 3);
    EXPECT_EQ(ProfileTool().Measure(smallFirst)[3].value, (1e16 + 2) / 3);
}

TEST(ProfileTool, GivesTheMissingValueForAProfileWithoutPoints)
{
    double const missing = -1.7976931348623157e308;

    ProfileTool::Results const results = ProfileTool().Measure({});

    EXPECT_EQ(results, (ProfileTool::Results{{{missing, 0}, {missing, 0}, {missing, 0}, {missing, 0}, {0, 1}}}));
}

TEST(ProfileTool, DecidesByItsLimitsBothIncluded)
{
    ProfileTool::Limits limits;
    limits[0] = {1, 5};
    limits[1] = {3.5, 5};
    limits[2] = {0, 2};
    limits[4] = {3, 3};
    ProfileTool const tool(limits);

    ProfileTool::Results const results = tool.Measure(Profile{{0, 5}, {2.5, 3}});

    EXPECT_EQ(results, (ProfileTool::Results{{{5, 1}, {3, 0}, {2.5, 0}, {4, 1}, {2, 0}}}));
}

TEST(ProfileTool, HasNoWidthInASinglePoint)
{
    EXPECT_EQ(ProfileTool().Measure(Profile{{7, 4}}), (ProfileTool::Results{{{4, 1}, {4, 1}, {0, 1}, {4, 1}, {1, 1}}}));
}

} // namespace ZuHost
