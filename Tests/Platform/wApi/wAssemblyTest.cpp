#include "wApi/wAssembly.h"
#include "wApi/wApiLib.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr wVersion VERSION{1, 0, 0, 0};

wAssembly* firstGlobal = nullptr;
wAssembly* secondGlobal = nullptr;
int constructions = 0;

wStatus ConstructFirst(wAssembly** assembly)
{
    ++constructions;
    return xwAssembly_BringUp(assembly, &firstGlobal, "First", {});
}

wStatus ConstructSecond(wAssembly** assembly)
{
    ++constructions;
    return xwAssembly_BringUp(assembly, &secondGlobal, "Second", {});
}

wStatus Fail(wAssembly**)
{
    return Zu::Status::NOT_SUPPORTED;
}

class wAssemblyTest : public testing::Test
{
protected:
    void SetUp() override
    {
        constructions = 0;
    }

    void TearDown() override
    {
        EXPECT_EQ(global, nullptr);
        EXPECT_EQ(firstGlobal, nullptr);
        EXPECT_EQ(secondGlobal, nullptr);
    }

    void Construct()
    {
        ASSERT_EQ(xwAssembly_ConstructInternal(&local, &global, "Tested", VERSION, wVersion{2, 0, 0, 0}),
                  Zu::Status::SUCCESS);
    }

    wAssembly* local = nullptr;
    wAssembly* global = nullptr;
};

} // namespace

TEST_F(wAssemblyTest, SetsBothHandlesAndClearsTheGlobalOneAtItsEnd)
{
    Construct();

    EXPECT_NE(local, nullptr);
    EXPECT_EQ(global, local);
    EXPECT_STREQ(xwAssembly_Name(local), "Tested");
    EXPECT_EQ(xwAssembly_Version(local), VERSION);
    EXPECT_EQ(xwAssembly_PlatformVersion(local), (wVersion{2, 0, 0, 0}));
    EXPECT_EQ(wObject_RefCount(local), 1u);

    EXPECT_EQ(xwAssembly_VRelease(local), Zu::Status::SUCCESS);
    EXPECT_EQ(global, nullptr);
}

TEST_F(wAssemblyTest, IsSharedThroughItsGlobalHandle)
{
    wAssembly* shared = nullptr;
    EXPECT_FALSE(xwAssembly_Share(&shared, &global));
    EXPECT_EQ(shared, nullptr);
    Construct();

    EXPECT_TRUE(xwAssembly_Share(&shared, &global));

    EXPECT_EQ(shared, local);
    EXPECT_EQ(wObject_RefCount(local), 2u);
    xwAssembly_VRelease(shared);
    EXPECT_EQ(global, local);
    xwAssembly_VRelease(local);
}

TEST_F(wAssemblyTest, KeepsItsDependenciesUntilItsEnd)
{
    Construct();

    EXPECT_EQ(xwAssembly_AddDependency(local, &ConstructFirst), Zu::Status::SUCCESS);
    EXPECT_EQ(xwAssembly_AddDependency(local, &ConstructSecond), Zu::Status::SUCCESS);
    EXPECT_EQ(xwAssembly_Finalize(local), Zu::Status::SUCCESS);

    EXPECT_EQ(constructions, 2);
    EXPECT_EQ(xwAssembly_DependencyCount(local), 2u);
    EXPECT_NE(firstGlobal, nullptr);
    EXPECT_NE(secondGlobal, nullptr);
    xwAssembly_VRelease(local);
}

TEST_F(wAssemblyTest, PassesTheFailureOfADependencyOn)
{
    Construct();

    EXPECT_EQ(xwAssembly_AddDependency(local, &Fail), Zu::Status::NOT_SUPPORTED);

    EXPECT_EQ(xwAssembly_DependencyCount(local), 0u);
    xwAssembly_VRelease(local);
}

TEST_F(wAssemblyTest, TakesNoDependencyOnceFinalised)
{
    Construct();
    ASSERT_EQ(xwAssembly_Finalize(local), Zu::Status::SUCCESS);

    EXPECT_EQ(xwAssembly_AddDependency(local, &ConstructFirst), Zu::Status::WRONG_STATE);
    EXPECT_EQ(xwAssembly_Finalize(local), Zu::Status::WRONG_STATE);

    EXPECT_EQ(constructions, 0);
    xwAssembly_VRelease(local);
}

TEST_F(wAssemblyTest, RefusesNullAndASecondOneBehindAHandle)
{
    Construct();
    wAssembly* other = nullptr;

    EXPECT_EQ(xwAssembly_ConstructInternal(&other, &global, "Other", VERSION, VERSION), Zu::Status::WRONG_STATE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(xwAssembly_ConstructInternal(nullptr, &global, "", VERSION, VERSION), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(xwAssembly_AddDependency(nullptr, &Fail), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(xwAssembly_AddDependency(local, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(xwAssembly_Finalize(nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(xwAssembly_VRelease(nullptr), Zu::Status::SUCCESS);
    xwAssembly_VRelease(local);
}

TEST_F(wAssemblyTest, LeavesNothingBehindWhenALibraryCannotBeBroughtUp)
{
    constexpr wAssemblyConstructor DEPENDENCIES[] = {&ConstructFirst, &Fail, &ConstructSecond};

    EXPECT_EQ(xwAssembly_BringUp(&local, &global, "Tested", DEPENDENCIES), Zu::Status::NOT_SUPPORTED);

    EXPECT_EQ(local, nullptr);
    EXPECT_EQ(constructions, 1);
}

TEST_F(wAssemblyTest, IsMadeOnceByFirstCallsOnManyThreads)
{
    std::vector<wAssembly*> made(4, nullptr);
    std::vector<std::thread> threads;
    for (auto& assembly : made)
    {
        threads.emplace_back([&assembly] { wApiLib_Construct(&assembly); });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }

    for (auto* const assembly : made)
    {
        ASSERT_NE(assembly, nullptr);
        EXPECT_EQ(assembly, made.front());
    }
    EXPECT_EQ(wObject_RefCount(made.front()), 4u);
    for (auto* const assembly : made)
    {
        xwAssembly_VRelease(assembly);
    }
}
