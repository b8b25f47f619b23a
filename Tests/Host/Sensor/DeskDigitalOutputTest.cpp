#include "Host/Sensor/DeskDigitalOutput.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ControlType = DeskDigitalOutput::ControlType;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(DeskDigitalOutput, IsOnAndLowAtFirst)
{
    DeskDigitalOutput const output;

    EXPECT_TRUE(output.IsEnabled());
    EXPECT_FALSE(output.Level(0));
}

TEST(DeskDigitalOutput, FollowsItsState)
{
    DeskDigitalOutput output;

    output.SetState(true);
    EXPECT_TRUE(output.Level(0));

    output.SetState(false);
    EXPECT_FALSE(output.Level(0));
}

TEST(DeskDigitalOutput, IsHighWhenInactiveAndActiveLow)
{
    DeskDigitalOutput output;

    output.SetPolarity(false);
    EXPECT_TRUE(output.Level(0));

    output.SetState(true);
    EXPECT_FALSE(output.Level(0));
}

TEST(DeskDigitalOutput, IsLowWhileItIsOffAndKeepsItsState)
{
    DeskDigitalOutput output;
    output.SetState(true);

    output.Enable(false);
    EXPECT_FALSE(output.IsEnabled());
    EXPECT_FALSE(output.Level(0));

    output.Enable(true);
    EXPECT_TRUE(output.Level(0));
}

TEST(DeskDigitalOutput, GivesAPulseForAsLongAsItWasTold)
{
    DeskDigitalOutput output;
    output.SetExposure(300);

    output.Trigger(1000);

    EXPECT_TRUE(output.Level(1000));
    EXPECT_TRUE(output.Level(1299));
    EXPECT_FALSE(output.Level(1300));
}

TEST(DeskDigitalOutput, CountsItsPulses)
{
    DeskDigitalOutput output;
    EXPECT_EQ(output.PulseCount(), 0u);

    output.Trigger(1000);
    output.Trigger(2000);
    output.Enable(false);
    EXPECT_EQ(RefusalOf([&] { output.Trigger(3000); }).status, Zu::Status::WRONG_STATE);
    output.Clear();

    EXPECT_EQ(output.PulseCount(), 2u);
    EXPECT_EQ(output.LastPulseUsec(), 2000u);
}

TEST(DeskDigitalOutput, BeginsAPulseAnew)
{
    DeskDigitalOutput output;
    output.SetExposure(300);

    output.Trigger(1000);
    output.SetExposure(10); // for later pulses
    EXPECT_TRUE(output.Level(1299));
    output.Trigger(1100);

    EXPECT_TRUE(output.Level(1109));
    EXPECT_FALSE(output.Level(1110));
}

TEST(DeskDigitalOutput, EndsAPulseWhenItIsSwitchedOff)
{
    DeskDigitalOutput output;
    output.Trigger(0);

    output.Enable(false);
    output.Enable(true);

    EXPECT_FALSE(output.Level(1));
}

TEST(DeskDigitalOutput, RefusesPulsesWithoutAMeaning)
{
    DeskDigitalOutput output;

    EXPECT_EQ(RefusalOf([&] { output.SetExposure(0); }), (Refusal{-997, "A pulse cannot last 0 us"}));
    EXPECT_EQ(RefusalOf([&] { output.SetExposure(10'000'001); }), (Refusal{-997, "A pulse cannot last 10000001 us"}));
    EXPECT_EQ(RefusalOf([&] { output.SetExposure(10'000'000); }), (Refusal{1, ""}));
}

TEST(DeskDigitalOutput, RefusesAPulseWhileItIsOff)
{
    DeskDigitalOutput output;
    output.Enable(false);

    EXPECT_EQ(RefusalOf([&] { output.Trigger(0); }), (Refusal{-1000, "A digital output that is off gives no pulse"}));
}

TEST(DeskDigitalOutput, TakesNoCommandsWhileEventsDriveIt)
{
    Refusal const refusal{-1000, "A digital output that events drive takes no commands"};
    DeskDigitalOutput output;
    output.SetControlType(ControlType::EVENT);

    EXPECT_EQ(RefusalOf([&] { output.SetState(true); }), refusal);
    EXPECT_EQ(RefusalOf([&] { output.Trigger(0); }), refusal);
    EXPECT_FALSE(output.Level(0));

    output.SetControlType(ControlType::COMMAND);
    EXPECT_EQ(RefusalOf([&] { output.SetState(true); }), (Refusal{1, ""}));
}

TEST(DeskDigitalOutput, RefusesATypeThatThereIsNot)
{
    DeskDigitalOutput output;

    EXPECT_EQ(RefusalOf([&] { output.SetControlType(ControlType{2}); }),
              (Refusal{-997, "A digital output has no control type 2"}));
}

TEST(DeskDigitalOutput, ForgetsItsSettingsButNotThatItIsOff)
{
    DeskDigitalOutput output;
    output.SetControlId(7);
    output.SetPolarity(false);
    output.SetControlType(ControlType::EVENT);
    EXPECT_EQ(output.ControlId(), 7u);
    output.Enable(false);

    output.Clear();

    EXPECT_FALSE(output.IsEnabled());
    EXPECT_EQ(output.ControlId(), 0u);
    output.Enable(true);
    EXPECT_FALSE(output.Level(0));
    output.Trigger(0);
    EXPECT_TRUE(output.Level(DeskDigitalOutput::FIRST_EXPOSURE_USEC - 1));
    EXPECT_FALSE(output.Level(DeskDigitalOutput::FIRST_EXPOSURE_USEC));
}

} // namespace ZuHost
