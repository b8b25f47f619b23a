#include "wApi/wVersion.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

TEST(wVersion, ReadsFourNumbers)
{
    wVersion version;

    EXPECT_EQ(wVersion_Parse(&version, "1.20.300.65535"), Zu::Status::SUCCESS);

    EXPECT_EQ(version, (wVersion{1, 20, 300, 65535}));
    EXPECT_LT(version, (wVersion{1, 21, 0, 0}));
}

class wVersionRefusal : public testing::TestWithParam<char const*>
{
};

TEST_P(wVersionRefusal, LeavesTheVersionAlone)
{
    wVersion version{9, 9, 9, 9};

    EXPECT_EQ(wVersion_Parse(&version, GetParam()), Zu::Status::BAD_FORMAT);

    EXPECT_EQ(version, (wVersion{9, 9, 9, 9}));
}

INSTANTIATE_TEST_SUITE_P(Texts, wVersionRefusal,
                         testing::Values("", "1", "1.0.0", "1.0.0.", "1.0.0.0.", "1.0.0.0.0", ".1.0.0", "1..0.0",
                                         "1.0.0.65536", "1.0.0.-1", "1.0.0.+1", " 1.0.0.0", "1.0.0.0 ", "1,0,0,0",
                                         "a.b.c.d"));

TEST(wVersion, RefusesNull)
{
    wVersion version;

    EXPECT_EQ(wVersion_Parse(nullptr, "1.0.0.0"), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wVersion_Parse(&version, nullptr), Zu::Status::BAD_ARGUMENT);
}
