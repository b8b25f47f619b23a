#include "Ctl/Commands/Shown.h"

#include "Ctl/Commands/ServiceStatus.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

using nlohmann::json;

TEST(Shown, RoundsNumbers)
{
    EXPECT_EQ(Rounded(25.0), "25");
    EXPECT_EQ(Rounded(49.96749), "49.967");
    EXPECT_EQ(Rounded(-0.0001), "0");
    EXPECT_EQ(Rounded(nullptr), "-");
    EXPECT_EQ(Rounded("text"), "-");
}

TEST(Shown, WritesDurations)
{
    EXPECT_EQ(Duration(9.9), "9 s");
    EXPECT_EQ(Duration(61), "1 min");
    EXPECT_EQ(Duration(3600 * 5 + 12 * 60), "5 h 12 min");
    EXPECT_EQ(Duration(3600 * 76), "3 d 4 h");
    EXPECT_EQ(Duration(-1), "0 s");
    EXPECT_EQ(Duration(1e300), "11574074074 d 1 h"); // no defined behaviour beyond the range of integers
}

TEST(Shown, WritesMembers)
{
    json const document{{"a", "text"}, {"b", 1}, {"c", nullptr}, {"_links", 1}, {"_embedded", 2}};
    EXPECT_EQ(Shown(document, "a"), "text");
    EXPECT_EQ(Shown(document, "b"), "1");
    EXPECT_EQ(Shown(document, "c"), "-");
    EXPECT_EQ(Shown(document, "d"), "-");
    EXPECT_EQ(WithoutLinks(document).size(), 3u);
    EXPECT_EQ(WithoutLinks(json::array({1})), json::array({1}));
}

TEST(Shown, NamesTheStatesOfServices)
{
    EXPECT_EQ(ServiceStateText(0), "running");
    EXPECT_EQ(ServiceStateText(5), "failed to stop");
    EXPECT_EQ(ServiceStateText(6), "state 6");
    EXPECT_EQ(ServiceStateText(-1), "state -1");
    EXPECT_FALSE(IsFailed(3));
    EXPECT_TRUE(IsFailed(4));
}

} // namespace ZuCtl
