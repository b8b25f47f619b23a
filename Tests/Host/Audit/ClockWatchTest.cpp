#include "Host/Audit/ClockWatch.h"

#include "Support/RecordingTrail.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using Synchronisation = ClockWatch::Synchronisation;

constexpr int64 SECOND = 1'000'000;

class ClockWatchTest : public testing::Test
{
protected:
    std::vector<std::string> Look(int64 realUsec, int64 unsteppedUsec, Synchronisation synchronisation)
    {
        reading = {realUsec, unsteppedUsec, synchronisation};
        trail.Clear();
        watch.Look();
        return trail.Lines();
    }

    ZuTest::RecordingTrail trail;
    ClockWatch::Reading reading;
    ClockWatch watch{trail, [this] { return reading; }};
};

using Lines = std::vector<std::string>;

} // namespace

TEST_F(ClockWatchTest, NotesAtTheStartWhetherTheClockIsSynchronised)
{
    EXPECT_EQ(Look(0, 0, Synchronisation::NO), (Lines{R"(host |  | clock |  | {"synchronised":"no"} | done)"}));
}

TEST_F(ClockWatchTest, NotesChangesOfTheSynchronisationOnly)
{
    Look(0, 0, Synchronisation::NO);

    EXPECT_EQ(Look(SECOND, SECOND, Synchronisation::NO), Lines{});
    EXPECT_EQ(Look(2 * SECOND, 2 * SECOND, Synchronisation::YES),
              (Lines{R"(host |  | clock | {"synchronised":"no"} | {"synchronised":"yes"} | done)"}));
    EXPECT_EQ(Look(3 * SECOND, 3 * SECOND, Synchronisation::UNKNOWN),
              (Lines{R"(host |  | clock | {"synchronised":"yes"} | {"synchronised":"unknown"} | done)"}));
}

TEST_F(ClockWatchTest, NotesStepsForwardAndBackOfMoreThanASecond)
{
    Look(10 * SECOND, 0, Synchronisation::YES);

    EXPECT_EQ(Look(20 * SECOND + SECOND, 10 * SECOND, Synchronisation::YES), Lines{});
    EXPECT_EQ(Look(25 * SECOND + 1, 12 * SECOND, Synchronisation::YES),
              (Lines{R"(host |  | clock step | {"time":"1970-01-01T00:00:23.000000Z"} | )"
                     R"({"stepUsec":2000001,"time":"1970-01-01T00:00:25.000001Z"} | done)"}));
    EXPECT_EQ(Look(1, 12 * SECOND, Synchronisation::YES),
              (Lines{R"(host |  | clock step | {"time":"1970-01-01T00:00:25.000001Z"} | )"
                     R"({"stepUsec":-25000000,"time":"1970-01-01T00:00:00.000001Z"} | done)"}));
    EXPECT_EQ(Look(SECOND, 13 * SECOND, Synchronisation::YES), Lines{});
}

TEST(ClockWatchMachine, ReadsTheClocksOfTheMachine)
{
    ClockWatch::Reading const first = ClockWatch::ReadMachine();
    ClockWatch::Reading const second = ClockWatch::ReadMachine();

    EXPECT_GT(first.realUsec, 1'700'000'000 * SECOND);
    EXPECT_GT(first.unsteppedUsec, 0);
    EXPECT_GE(second.unsteppedUsec, first.unsteppedUsec);
}

} // namespace ZuHost
