#include "Plugins/SparkplugMqtt/ClockJumps.h"
#include "ZuCommon/Problems.h"

#include <gtest/gtest.h>

#include <string>

namespace SparkplugMqtt
{

class ClockJumpsTest : public testing::Test
{
protected:
    /// Lets `seconds` pass and the clock jump by `jumpMsec`, and looks.
    bool Look(int64 seconds, int64 jumpMsec = 0)
    {
        clock.unsteppedUsec += seconds * 1'000'000;
        clock.utcMsec += seconds * 1000 + jumpMsec;
        return jumps.Look();
    }

    /// The text of the problem; empty without one.
    std::string Told() const
    {
        auto const list = problems.List();
        EXPECT_LE(list.size(), 1U);
        return list.empty() ? "" : list.front().text;
    }

    ZuCommon::ProblemsManager problems;
    ClockJumps::Reading clock{1'777'777'777'000, 5'000'000}; // 2026-05-03T03:09:37Z
    ClockJumps jumps{problems, [this] { return clock; }};
};

TEST_F(ClockJumpsTest, AClockThatGoesOnIsNoProblem)
{
    EXPECT_FALSE(Look(0));
    EXPECT_FALSE(Look(1));
    EXPECT_FALSE(Look(3600));
    EXPECT_FALSE(Look(1, 999)); // a time server speeds it up
    EXPECT_FALSE(Look(1, -999));
    EXPECT_EQ(Told(), "");
}

TEST_F(ClockJumpsTest, AJumpTellsBothTimesAndWhatToDo)
{
    Look(0);
    EXPECT_TRUE(Look(3, 3'600'000));
    EXPECT_EQ(Told(),
              "The clock has jumped from 2026-05-03T03:09:40Z to 2026-05-03T04:09:40Z. The timestamps of Sparkplug "
              "MQTT on one side of it are wrong: find out which of the two times is right, and let a time server "
              "keep the clock.");
    EXPECT_FALSE(Look(1));
    EXPECT_NE(Told(), "");
}

TEST_F(ClockJumpsTest, FurtherJumpsAreCountedFromTheFirst)
{
    Look(0);
    Look(0, 1000);
    EXPECT_TRUE(Look(1, -60'000));
    EXPECT_TRUE(
        Told().starts_with("The clock has jumped from 2026-05-03T03:09:39Z to 2026-05-03T03:08:39Z, jump 2 since "
                           "2026-05-03T03:09:37Z. The timestamps"))
        << Told();
}

TEST_F(ClockJumpsTest, TheProblemGoesAnHourAfterTheLastJump)
{
    Look(0);
    Look(0, 5000);
    Look(3599);
    EXPECT_NE(Told(), "");
    Look(1);
    EXPECT_EQ(Told(), "");
    EXPECT_TRUE(Look(1, -5000));
    EXPECT_EQ(Told().find("jump 2"), std::string::npos);
}

TEST_F(ClockJumpsTest, TheMachinesClocksGoOn)
{
    ClockJumps ofMachine(problems);
    EXPECT_FALSE(ofMachine.Look());
    EXPECT_FALSE(ofMachine.Look());
    EXPECT_GT(ClockJumps::ReadMachine().utcMsec, 1'700'000'000'000);
}

} // namespace SparkplugMqtt
