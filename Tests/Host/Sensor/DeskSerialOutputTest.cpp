#include "Host/Sensor/DeskSerialOutput.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(DeskSerialOutput, KeepsWhatItSends)
{
    DeskSerialOutput output;

    output.Write(3, "abc");
    output.Write(0, "");
    output.Write(2, "d\n");

    EXPECT_EQ(output.Sent(), "abcd\n");
    EXPECT_EQ(output.SentCount(), 5u);
}

TEST(DeskSerialOutput, KeepsTheLastBytesAlone)
{
    DeskSerialOutput output;

    output.Write(4096, std::string(4096, 'a'));
    output.Write(2, "bc");

    EXPECT_EQ(output.Sent(), std::string(4094, 'a') + "bc");
    EXPECT_EQ(output.SentCount(), 4098u);
}

TEST(DeskSerialOutput, RefusesASizeThatIsNotThatOfTheText)
{
    DeskSerialOutput output;

    EXPECT_EQ(RefusalOf([&] { output.Write(2, "abc"); }),
              (Refusal{-997, "A serial output was given 3 bytes and told to send 2"}));
    EXPECT_EQ(output.SentCount(), 0u);
}

TEST(DeskSerialOutput, TakesTheBitRatesOfSerialLines)
{
    DeskSerialOutput output;
    EXPECT_EQ(output.BitRate(), 115200u);

    for (uint32 const rate : {9600u, 19200u, 38400u, 57600u, 115200u})
    {
        output.SetBitRate(rate);
        EXPECT_EQ(output.BitRate(), rate);
    }

    EXPECT_EQ(RefusalOf([&] { output.SetBitRate(0); }),
              (Refusal{-997, "A serial output cannot send 0 bits per second"}));
    EXPECT_EQ(output.BitRate(), 115200u);
}

TEST(DeskSerialOutput, RefusesModesAndTypesThatThereAreNot)
{
    DeskSerialOutput output;
    output.SetMode(DeskSerialOutput::ControlMode::BINARY);

    EXPECT_EQ(RefusalOf([&] { output.SetMode(DeskSerialOutput::ControlMode{2}); }),
              (Refusal{-997, "A serial output has no mode 2"}));
    EXPECT_EQ(RefusalOf([&] { output.SetControlType(DeskSerialOutput::ControlType{255}); }),
              (Refusal{-997, "A serial output has no control type 255"}));
    EXPECT_EQ(output.Mode(), DeskSerialOutput::ControlMode::BINARY);
}

TEST(DeskSerialOutput, SendsNothingWhileItIsOff)
{
    DeskSerialOutput output;
    output.Enable(false);

    EXPECT_FALSE(output.IsEnabled());
    EXPECT_EQ(RefusalOf([&] { output.Write(1, "a"); }), (Refusal{-1000, "A serial output that is off sends nothing"}));
    EXPECT_EQ(output.SentCount(), 0u);
}

TEST(DeskSerialOutput, TakesNoCommandsWhileEventsDriveIt)
{
    DeskSerialOutput output;
    output.SetControlId(3);
    output.SetControlType(DeskSerialOutput::ControlType::EVENT);

    EXPECT_EQ(RefusalOf([&] { output.Write(1, "a"); }),
              (Refusal{-1000, "A serial output that events drive takes no commands"}));
    EXPECT_EQ(output.ControlId(), 3u);
}

} // namespace ZuHost
