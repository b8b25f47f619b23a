#include "Host/Sensor/ProfileSource.h"

#include <gtest/gtest.h>

#include <limits>

namespace ZuHost
{

namespace
{

constexpr float NOT_SEEN = std::numeric_limits<float>::quiet_NaN();

Profile Copy(ProfileView profile)
{
    return {profile.begin(), profile.end()};
}

} // namespace

TEST(Replay, GivesRowAfterRowOverAndOver)
{
    Replay replay(RangeImage(1, 3, {{1, 0, 10}, {2, 0, 20}, {3, 0, 30}}));

    EXPECT_EQ(Copy(*replay.ProfileAt(0)), (Profile{{1000, 10000}}));
    EXPECT_EQ(Copy(*replay.ProfileAt(2)), (Profile{{3000, 30000}}));
    EXPECT_EQ(Copy(*replay.ProfileAt(3)), (Profile{{1000, 10000}}));
    EXPECT_EQ(Copy(*replay.ProfileAt(3'000'000'001)), (Profile{{2000, 20000}}));
}

TEST(Replay, WidensTheFloatBeforeItMultiplies)
{
    Replay replay(RangeImage(1, 1, {{0.1f, 0, 0.7f}}));

    EXPECT_EQ(Copy(*replay.ProfileAt(0)),
              (Profile{{static_cast<double>(0.1f) * 1000, static_cast<double>(0.7f) * 1000}}));
    EXPECT_NE(replay.ProfileAt(0)->at(0).z, static_cast<double>(0.7f * 1000));
}

TEST(Replay, LeavesOutAPointWithACoordinateThatIsNoNumber)
{
    float const endless = std::numeric_limits<float>::infinity();
    Replay replay(RangeImage(5, 2,
                             {{NOT_SEEN, 0, 1},
                              {1, NOT_SEEN, 1},
                              {1, 0, NOT_SEEN},
                              {2, 0, 3},
                              {endless, 0, 1},
                              {NOT_SEEN, NOT_SEEN, NOT_SEEN},
                              {NOT_SEEN, 0, 0},
                              {NOT_SEEN, 0, 0},
                              {NOT_SEEN, 0, 0},
                              {0, 0, -endless}}));

    EXPECT_EQ(Copy(*replay.ProfileAt(0)), (Profile{{2000, 3000}}));
    EXPECT_TRUE(replay.ProfileAt(1)->empty());
}

} // namespace ZuHost
