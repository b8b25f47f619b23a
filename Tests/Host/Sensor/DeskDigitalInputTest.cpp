#include "Host/Sensor/DeskDigitalInput.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(DeskDigitalInput, ReadsItsFirstPinUntilItIsGivenAnother)
{
    DeskDigitalInput input(1);
    EXPECT_TRUE(input.IsEnabled());
    EXPECT_EQ(input.Pin(), 1u);

    input.SetPin(0);

    EXPECT_EQ(input.Pin(), 0u);
}

TEST(DeskDigitalInput, KeepsWhichPinsGiveEvents)
{
    DeskDigitalInput input(0);

    input.EnableEvents(1, true);

    EXPECT_FALSE(input.HasEvents(0));
    EXPECT_TRUE(input.HasEvents(1));
}

TEST(DeskDigitalInput, RefusesAPinThatThereIsNot)
{
    Refusal const refusal{-997, "A digital input has no pin 2"};
    DeskDigitalInput input(0);

    EXPECT_EQ(RefusalOf([&] { input.SetPin(2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { input.EnableEvents(2, true); }), refusal);
    EXPECT_EQ(RefusalOf([&] { input.HasEvents(2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { input.SetPin(uint64{1} << 32); }),
              (Refusal{-997, "A digital input has no pin 4294967296"}));
    EXPECT_EQ(RefusalOf([&] { DeskDigitalInput{2}; }), refusal);
    EXPECT_EQ(input.Pin(), 0u);
}

TEST(DeskDigitalInput, ForgetsItsSettingsButNotThatItIsOff)
{
    DeskDigitalInput input(1);
    input.SetPin(0);
    input.EnableEvents(0, true);
    input.Enable(false);

    input.Clear();

    EXPECT_EQ(input.Pin(), 1u);
    EXPECT_FALSE(input.HasEvents(0));
    EXPECT_FALSE(input.IsEnabled());
}

} // namespace ZuHost
