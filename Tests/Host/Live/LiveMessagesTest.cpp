#include "Host/Live/LiveMessages.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ZuHost::LiveMessages
{

namespace
{

SharedFrame FrameOf(Profile profile, uint64 number)
{
    auto frame = std::make_shared<Frame>();
    frame->stamp.stampCounter = number;
    frame->stamp.stampTime = 0x0102030405060708;
    frame->stamp.stampEncoder = -1;
    frame->profile = std::make_shared<Profile const>(std::move(profile));
    frame->sequence = number;
    return frame;
}

std::string Bytes(std::vector<int> const& numbers)
{
    return {numbers.begin(), numbers.end()};
}

} // namespace

TEST(LiveMessages, KeepAProfileThatIsShortEnough)
{
    Profile const profile{{0, 1}, {1, 2}, {2, 3}};
    EXPECT_EQ(Reduced(profile, 3), profile);
    EXPECT_TRUE(Reduced({}, 2).empty());
}

TEST(LiveMessages, KeepLowestAndHighestPointOfEachStretch)
{
    Profile const profile{{0, 5}, {1, 9}, {2, 1}, {3, 5}, {4, 5}, {5, 0}, {6, 7}, {7, 5}};
    EXPECT_EQ(Reduced(profile, 4), (Profile{{1, 9}, {2, 1}, {5, 0}, {6, 7}}));
    EXPECT_EQ(Reduced(profile, 5), (Profile{{1, 9}, {2, 1}, {5, 0}, {6, 7}}));
    EXPECT_EQ(Reduced(profile, 2), (Profile{{1, 9}, {5, 0}}));
    EXPECT_EQ(Reduced(Profile{{0, 1}, {1, 1}, {2, 1}}, 2).size(), 2u);
}

TEST(LiveMessages, TakeTheHighestPointOfEachColumn)
{
    Columns const columns({-2, 2}, 4);

    EXPECT_EQ(columns.first, -1.5);
    EXPECT_EQ(columns.spacing, 1);
    std::vector<float> const heights = columns.Heights(Profile{{-2, 1}, {-1.5, 3}, {-1.25, 2}, {0, 4}, {2, 5}});
    EXPECT_EQ(heights[0], 3);
    EXPECT_TRUE(std::isnan(heights[1]));
    EXPECT_EQ(heights[2], 4);
    EXPECT_EQ(heights[3], 5); // the end of the line belongs to the last column
}

TEST(LiveMessages, PutALineWithoutWidthIntoOneColumn)
{
    Columns const columns({3, 3}, 2);
    std::vector<float> const heights = columns.Heights(Profile{{3, 1}});
    EXPECT_EQ(heights[0], 1);
    EXPECT_TRUE(std::isnan(heights[1]));
}

TEST(LiveMessages, ShowAProfileByteByByte)
{
    EXPECT_EQ(OfProfile(*FrameOf({{1, 2}}, 259), 10),
              "ZUPR" + Bytes({56, 0,  0,    0,                     // length
                              3,  1,  0,    0,  0,  0,  0,  0,     // number
                              8,  7,  6,    5,  4,  3,  2,  1,     // time
                              -1, -1, -1,   -1, -1, -1, -1, -1,    // encoder
                              1,  0,  0,    0,  1,  0,  0,  0,     // rows, columns
                              0,  0,  0,    0,  0,  0,  0,  0,     // unused
                              0,  0,  -128, 63, 0,  0,  0,  64})); // x = 1, z = 2
}

TEST(LiveMessages, ShowRowsByteByByte)
{
    std::string const message = OfRows({FrameOf({{0, 1}}, 7), FrameOf({}, 8)}, Columns({0, 2}, 2));
    EXPECT_EQ(message.size(), HEADER_BYTES + 16);
    EXPECT_EQ(message.substr(0, 16), "ZURI" + Bytes({64, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(message.substr(32, 20), Bytes({2, 0, 0,    0,  2, 0, 0,    0,  // rows, columns
                                             0, 0, 0,    63, 0, 0, -128, 63, // first = 0.5, spacing = 1
                                             0, 0, -128, 63}));              // 1
    EXPECT_EQ(message.substr(52), Bytes({0, 0, -64, 127, 0, 0, -64, 127, 0, 0, -64, 127}));
}

TEST(LiveMessages, ShowThatTheConnectionLives)
{
    EXPECT_EQ(Heartbeat(Kind::ROWS), "ZURI" + Bytes({48, 0, 0, 0}) + std::string(40, '\0'));
    EXPECT_EQ(Heartbeat(Kind::PROFILE).substr(0, 4), "ZUPR");
}

} // namespace ZuHost::LiveMessages
