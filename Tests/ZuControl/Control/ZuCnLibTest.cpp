#include "ZuControl/Control/ZuCnLib.h"

#include "ZuCommon/ZcLib.h"
#include "ZuCore/ZuCoreLib.h"
#include "wApi/wApiLib.h"
#include "wApi/wObject.h"
#include "wApi/wVersion.h"
#include "wBeacon/wBcLib.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <dlfcn.h>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Calls = std::vector<std::string>;

Calls const STEPS = {"wVersion_Parse 1.0.0.0",
                     "wVersion_Parse 1.0.0.0",
                     "xwAssembly_ConstructInternal ZuCnLib",
                     "xwAssembly_AddDependency wApiLib",
                     "xwAssembly_AddDependency wBcLib",
                     "xwAssembly_AddDependency ZcLib",
                     "xwAssembly_AddDependency ZuCoreLib",
                     "xwAssembly_Finalize"};

/// Records calls of platform functions. This program defines the functions itself, in front of those of libZuApi.
struct Recorder
{
    Calls calls;
    std::size_t failingCall = ~std::size_t{0}; // which call fails, counted from 0
    bool isInside = false;                     // calls from inside of the platform are not recorded
};

Recorder* recorder = nullptr; // null: no call is recorded

/// Records the call, then calls the next function with this name, which is that of libZuApi. The failing call returns
/// `Zu::Status::NOT_SUPPORTED` without calling it.
template <typename... Args>
wStatus Record(std::string const& call, char const* symbol, Args... args)
{
    auto* const original = reinterpret_cast<wStatus (*)(Args...)>(dlsym(RTLD_NEXT, symbol));
    if (recorder == nullptr || recorder->isInside)
    {
        return original(args...);
    }
    recorder->calls.push_back(call);
    if (recorder->calls.size() - 1 == recorder->failingCall)
    {
        return Zu::Status::NOT_SUPPORTED;
    }
    recorder->isInside = true;
    wStatus const status = original(args...);
    recorder->isInside = false;
    return status;
}

std::string NameOf(wAssemblyConstructor construct)
{
    for (auto const& [known, name] :
         {std::pair(&wApiLib_Construct, "wApiLib"), std::pair(&wBcLib_Construct, "wBcLib"),
          std::pair(&ZcLib_Construct, "ZcLib"), std::pair(&ZuCoreLib_Construct, "ZuCoreLib")})
    {
        if (construct == known)
        {
            return name;
        }
    }
    return "another";
}

} // namespace

wStatus wVersion_Parse(wVersion* version, char const* text)
{
    return Record("wVersion_Parse " + std::string(text), "_Z14wVersion_ParseP8wVersionPKc", version, text);
}

wStatus xwAssembly_ConstructInternal(wAssembly** local, wAssembly** global, char const* name, wVersion const& version,
                                     wVersion const& platformVersion)
{
    return Record<wAssembly**, wAssembly**, char const*, wVersion const&, wVersion const&>(
        "xwAssembly_ConstructInternal " + std::string(name),
        "_Z28xwAssembly_ConstructInternalPP9wAssemblyS1_PKcRK8wVersionS6_", local, global, name, version,
        platformVersion);
}

wStatus xwAssembly_AddDependency(wAssembly* assembly, wAssemblyConstructor construct)
{
    return Record("xwAssembly_AddDependency " + NameOf(construct), "_Z24xwAssembly_AddDependencyP9wAssemblyPFiPS0_E",
                  assembly, construct);
}

wStatus xwAssembly_Finalize(wAssembly* assembly)
{
    return Record("xwAssembly_Finalize", "_Z19xwAssembly_FinalizeP9wAssembly", assembly);
}

wStatus xwAssembly_VRelease(wAssembly* assembly)
{
    return Record("xwAssembly_VRelease", "_Z19xwAssembly_VReleaseP9wAssembly", assembly);
}

class ZuCnLibTest : public testing::Test
{
protected:
    ZuCnLibTest()
    {
        recorder = &recorded;
    }

    ~ZuCnLibTest() override
    {
        recorder = nullptr;
    }

    Recorder recorded;
};

TEST_F(ZuCnLibTest, TellsItsVersion)
{
    EXPECT_EQ(std::string(wPlugin_AssemblyVersion()), "1.0.0.0");
}

TEST_F(ZuCnLibTest, BuildsTheAssemblyStepByStep)
{
    wAssembly* assembly = nullptr;

    ASSERT_EQ(ZuCnLib_Construct(&assembly), 1);

    EXPECT_EQ(recorded.calls, STEPS);
    EXPECT_EQ(std::string(xwAssembly_Name(assembly)), "ZuCnLib");
    EXPECT_EQ(xwAssembly_Version(assembly), (wVersion{1, 0, 0, 0}));
    EXPECT_EQ(xwAssembly_PlatformVersion(assembly), (wVersion{1, 0, 0, 0}));
    EXPECT_EQ(xwAssembly_DependencyCount(assembly), 4u);
    xwAssembly_VRelease(assembly);
}

TEST_F(ZuCnLibTest, GivesTheSameAssemblyWithOneMoreReferenceAndRepeatsNoStep)
{
    wAssembly* first = nullptr;
    wAssembly* second = nullptr;
    ASSERT_EQ(ZuCnLib_Construct(&first), 1);
    recorded.calls.clear();

    ASSERT_EQ(wPlugin_ConstructAssembly(&second), 1);

    EXPECT_EQ(recorded.calls, Calls{});
    EXPECT_EQ(first, second);
    EXPECT_EQ(wObject_RefCount(first), 2u);
    xwAssembly_VRelease(second);
    EXPECT_EQ(std::string(xwAssembly_Name(first)), "ZuCnLib");
    xwAssembly_VRelease(first);
}

TEST_F(ZuCnLibTest, StopsAtTheStepThatFailsAndReleasesWhatItHasBuilt)
{
    for (std::size_t step = 0; step < STEPS.size(); ++step)
    {
        SCOPED_TRACE(STEPS[step]);
        recorded = Recorder{{}, step, false};
        wAssembly* assembly = nullptr;

        EXPECT_EQ(ZuCnLib_Construct(&assembly), Zu::Status::NOT_SUPPORTED);

        Calls expected(STEPS.begin(), STEPS.begin() + static_cast<std::ptrdiff_t>(step) + 1);
        if (step > 2) // the assembly exists
        {
            expected.push_back("xwAssembly_VRelease");
        }
        EXPECT_EQ(recorded.calls, expected);
        EXPECT_EQ(assembly, nullptr);
    }
    recorded = Recorder{};
    wAssembly* assembly = nullptr;
    EXPECT_EQ(ZuCnLib_Construct(&assembly), 1);
    EXPECT_EQ(recorded.calls, STEPS);
    xwAssembly_VRelease(assembly);
}

TEST_F(ZuCnLibTest, IsBuiltAnewWhenTheLastReferenceIsReleased)
{
    wAssembly* assembly = nullptr;
    ASSERT_EQ(ZuCnLib_Construct(&assembly), 1);
    xwAssembly_VRelease(assembly);
    recorded.calls.clear();

    wAssembly* again = nullptr;
    ASSERT_EQ(ZuCnLib_Construct(&again), 1);

    EXPECT_EQ(recorded.calls, STEPS);
    xwAssembly_VRelease(again);
}

TEST_F(ZuCnLibTest, RefusesNull)
{
    EXPECT_EQ(ZuCnLib_Construct(nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(recorded.calls, Calls{});
}
