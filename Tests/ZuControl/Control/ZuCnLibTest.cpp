#include "ZuControl/Control/ZuCnLib.h"

#include <gtest/gtest.h>

#include <string>

TEST(ZuCnLib, TellsItsVersion)
{
    EXPECT_EQ(std::string(wPlugin_AssemblyVersion()), "1.0.0.0");
}

TEST(ZuCnLib, GivesTheSameAssemblyWithOneMoreReference)
{
    wAssembly* first = nullptr;
    wAssembly* second = nullptr;

    ASSERT_EQ(ZuCnLib_Construct(&first), 1);
    ASSERT_EQ(wPlugin_ConstructAssembly(&second), 1);

    EXPECT_EQ(first, second);
    EXPECT_EQ(std::string(xwAssembly_Name(first)), "ZuCnLib");
    EXPECT_EQ(xwAssembly_Version(first), (wVersion{1, 0, 0, 0}));
    EXPECT_EQ(xwAssembly_DependencyCount(first), 4u);
    xwAssembly_VRelease(second);
    EXPECT_EQ(std::string(xwAssembly_Name(first)), "ZuCnLib");
    xwAssembly_VRelease(first);
}

TEST(ZuCnLib, IsBuiltAnewWhenTheLastReferenceWent)
{
    wAssembly* assembly = nullptr;
    ASSERT_EQ(ZuCnLib_Construct(&assembly), 1);
    xwAssembly_VRelease(assembly);

    wAssembly* again = nullptr;
    ASSERT_EQ(ZuCnLib_Construct(&again), 1);

    EXPECT_EQ(xwAssembly_DependencyCount(again), 4u);
    xwAssembly_VRelease(again);
}
