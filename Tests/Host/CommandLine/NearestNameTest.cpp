#include "Host/CommandLine/NearestName.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(NearestName, FindsTheNameThatWasMeant)
{
    std::vector<std::string> const names = {"http", "https", "rate", "trail-days", "trail-mib"};

    EXPECT_EQ(NearestName("htps", names), "https");
    EXPECT_EQ(NearestName("httpx", names), "http"); // one letter removed, where https has one replaced: the first holds
    EXPECT_EQ(NearestName("httpss", names), "https");
    EXPECT_EQ(NearestName("Rate", names), "rate");
    EXPECT_EQ(NearestName("trail_days", names), "trail-days");
    EXPECT_EQ(NearestName("trail-mbi", names), "trail-mib");
}

TEST(NearestName, FindsNothingWhereNothingIsNear)
{
    EXPECT_EQ(NearestName("colour", {"http", "rate"}), "");
    EXPECT_EQ(NearestName("", {"http"}), "");
    EXPECT_EQ(NearestName("rate", {}), "");
    EXPECT_EQ(NearestName("x", {"y"}), "");
}

} // namespace ZuHost
