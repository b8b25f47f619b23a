#include "Host/Sensor/DeskAnalogOutput.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <limits>

namespace ZuHost
{

using ControlType = DeskAnalogOutput::ControlType;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

constexpr uint64 HOLD = DeskAnalogOutput::HOLD_USEC;

TEST(DeskAnalogOutput, DrivesTheLeastAtFirst)
{
    DeskAnalogOutput output;

    EXPECT_TRUE(output.IsEnabled());
    EXPECT_EQ(output.Current(0), 4.0);
}

TEST(DeskAnalogOutput, DrivesEachCurrentForItsTimeAndTheLastOneOn)
{
    DeskAnalogOutput output;

    output.Enqueue(12.5, 100);
    output.Enqueue(20, 101);
    output.Enqueue(4, 102);

    EXPECT_EQ(output.Current(100), 12.5);
    EXPECT_EQ(output.Current(100 + HOLD - 1), 12.5);
    EXPECT_EQ(output.Current(100 + HOLD), 20.0);
    EXPECT_EQ(output.Current(100 + 2 * HOLD), 4.0);
    EXPECT_EQ(output.Current(100 + 99 * HOLD), 4.0);
}

TEST(DeskAnalogOutput, DrivesACurrentAtOnceWhenNoneIsHeld)
{
    DeskAnalogOutput output;
    output.Enqueue(5, 0);

    output.Enqueue(6, 7 * HOLD);

    EXPECT_EQ(output.Current(7 * HOLD), 6.0);
    output.Enqueue(7, 7 * HOLD);
    EXPECT_EQ(output.Current(8 * HOLD - 1), 6.0);
    EXPECT_EQ(output.Current(8 * HOLD), 7.0);
}

TEST(DeskAnalogOutput, PassesOverWhatNobodyLookedAtMeanwhile)
{
    DeskAnalogOutput output;
    output.Enqueue(5, 0);
    output.Enqueue(6, 0);
    output.Enqueue(7, 0);

    EXPECT_EQ(output.Current(3 * HOLD), 7.0);
}

TEST(DeskAnalogOutput, RefusesWhatItCannotDrive)
{
    DeskAnalogOutput output;

    EXPECT_EQ(RefusalOf([&] { output.Enqueue(3.99, 0); }), (Refusal{-997, "An analog output cannot drive 3.99 mA"}));
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(20.01, 0); }), (Refusal{-997, "An analog output cannot drive 20.01 mA"}));
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(std::numeric_limits<double>::quiet_NaN(), 0); }).status, -997);
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(std::numeric_limits<double>::infinity(), 0); }).status, -997);
    EXPECT_EQ(output.Current(0), 4.0);
}

TEST(DeskAnalogOutput, RefusesWhatItHasNoRoomForUntilTimeHasPassed)
{
    Refusal const refusal{-977, "An analog output has too many currents to drive"};
    DeskAnalogOutput output;
    output.Enqueue(4, 0);
    for (std::size_t i = 0; i < DeskAnalogOutput::CAPACITY; ++i)
    {
        output.Enqueue(5, 0);
    }

    EXPECT_EQ(RefusalOf([&] { output.Enqueue(6, HOLD - 1); }), refusal);
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(6, HOLD); }), (Refusal{1, ""}));
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(6, HOLD); }), refusal);
}

TEST(DeskAnalogOutput, DrivesNothingWhileItIsOffAndForgetsWhatWaited)
{
    DeskAnalogOutput output;
    output.Enqueue(10, 0);
    output.Enqueue(11, 0);

    output.Enable(false);

    EXPECT_EQ(output.Current(1), 0.0);
    EXPECT_EQ(RefusalOf([&] { output.Enqueue(10, 1); }),
              (Refusal{-1000, "An analog output that is off drives no current"}));
    output.Enable(true);
    EXPECT_EQ(output.Current(HOLD), 4.0);
}

TEST(DeskAnalogOutput, KeepsWhatWaitsWhenItIsSwitchedOnAgain)
{
    DeskAnalogOutput output;
    output.Enqueue(10, 0);

    output.Enable(true);

    EXPECT_EQ(output.Current(1), 10.0);
}

TEST(DeskAnalogOutput, TakesNoCommandsWhileEventsDriveIt)
{
    DeskAnalogOutput output;
    output.SetControlType(ControlType::EVENT);

    EXPECT_EQ(RefusalOf([&] { output.Enqueue(10, 0); }),
              (Refusal{-1000, "An analog output that events drive takes no commands"}));
    EXPECT_EQ(RefusalOf([&] { output.SetControlType(ControlType{2}); }),
              (Refusal{-997, "An analog output has no control type 2"}));
}

TEST(DeskAnalogOutput, KeepsItsControlId)
{
    DeskAnalogOutput output;

    output.SetControlId(4294967295u);

    EXPECT_EQ(output.ControlId(), 4294967295u);
}

} // namespace ZuHost
