#include "wBeacon/wBcLib.h"
#include "wApi/wApiLib.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

TEST(wBcLib, StandsOnTheLibraryBelow)
{
    wAssembly* below = nullptr;
    wAssembly* assembly = nullptr;
    ASSERT_EQ(wApiLib_Construct(&below), Zu::Status::SUCCESS);

    ASSERT_EQ(wBcLib_Construct(&assembly), Zu::Status::SUCCESS);

    EXPECT_STREQ(xwAssembly_Name(assembly), "wBcLib");
    EXPECT_EQ(xwAssembly_DependencyCount(assembly), 1u);
    EXPECT_EQ(wObject_RefCount(below), 2u);
    xwAssembly_VRelease(assembly);
    EXPECT_EQ(wObject_RefCount(below), 1u);
    xwAssembly_VRelease(below);
}
