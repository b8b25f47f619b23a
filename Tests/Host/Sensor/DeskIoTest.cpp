#include "Host/Sensor/DeskIo.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace ZuHost
{

using IoType = DeskIo::IoType;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

class DeskIoTest : public testing::Test
{
protected:
    void SetState(uint64 index, bool state)
    {
        io.UseDigitalOutput(index, [state](DeskDigitalOutput& output, uint64) { output.SetState(state); });
    }

    std::atomic<uint64> nowUsec{1000};
    DeskIo io{[this] { return nowUsec.load(); }};
};

} // namespace

TEST_F(DeskIoTest, HasSomeOfEachKind)
{
    EXPECT_EQ(DeskIo::Count(IoType::ANALOG_OUTPUT), 2u);
    EXPECT_EQ(DeskIo::Count(IoType::SERIAL_OUTPUT), 1u);
    EXPECT_EQ(DeskIo::Count(IoType::DIGITAL_OUTPUT), 2u);
    EXPECT_EQ(DeskIo::Count(IoType::DIGITAL_INPUT), 2u);
}

TEST_F(DeskIoTest, RefusesWhatItDoesNotHave)
{
    Refusal const noKind{-999, "The sensor has no inputs or outputs of kind 5"};

    EXPECT_EQ(RefusalOf([] { DeskIo::Count(IoType{5}); }), noKind);
    EXPECT_EQ(RefusalOf([this] { io.IsEnabled(IoType{5}, 0); }), noKind);
    EXPECT_EQ(RefusalOf([this] { io.Enable(IoType{5}, 0, true); }), noKind);
    EXPECT_EQ(RefusalOf([this] { io.Enable(IoType::ANALOG_OUTPUT, 2, true); }),
              (Refusal{-999, "The sensor has no analog output 2"}));
    EXPECT_EQ(RefusalOf([this] { io.IsEnabled(IoType::DIGITAL_INPUT, ~uint64{0}); }),
              (Refusal{-999, "The sensor has no digital input 18446744073709551615"}));
    EXPECT_EQ(RefusalOf([this] { io.UseSerialOutput(1, [](DeskSerialOutput&) { FAIL(); }); }),
              (Refusal{-999, "The sensor has no serial output 1"}));
    EXPECT_EQ(RefusalOf([this] { io.UseDigitalOutput(2, [](DeskDigitalOutput&, uint64) { FAIL(); }); }),
              (Refusal{-999, "The sensor has no digital output 2"}));
}

TEST_F(DeskIoTest, SwitchesEachOnAndOffByItself)
{
    io.Enable(IoType::DIGITAL_OUTPUT, 1, false);

    EXPECT_FALSE(io.IsEnabled(IoType::DIGITAL_OUTPUT, 1));
    EXPECT_TRUE(io.IsEnabled(IoType::DIGITAL_OUTPUT, 0));
    EXPECT_TRUE(io.IsEnabled(IoType::DIGITAL_INPUT, 1));
    EXPECT_TRUE(io.IsEnabled(IoType::ANALOG_OUTPUT, 1));
    EXPECT_TRUE(io.IsEnabled(IoType::SERIAL_OUTPUT, 0));
}

TEST_F(DeskIoTest, ReadsEachOutputBackOnItsInput)
{
    EXPECT_EQ(io.InputBits(), 0);

    SetState(0, true);
    EXPECT_EQ(io.InputBits(), 1);

    SetState(1, true);
    EXPECT_EQ(io.InputBits(), 3);

    SetState(0, false);
    EXPECT_EQ(io.InputBits(), 2);
}

TEST_F(DeskIoTest, ReadsTheOtherOutputOnceTheInputIsTied)
{
    SetState(1, true);

    io.UseDigitalInput(0, [](DeskDigitalInput& input) { input.SetPin(1); });

    EXPECT_EQ(io.InputBits(), 3);
}

TEST_F(DeskIoTest, ReadsNothingOnAnInputThatIsOff)
{
    SetState(0, true);
    SetState(1, true);

    io.Enable(IoType::DIGITAL_INPUT, 0, false);

    EXPECT_EQ(io.InputBits(), 2);
}

TEST_F(DeskIoTest, ReadsAPulseWhileItLasts)
{
    io.UseDigitalOutput(1, [](DeskDigitalOutput& output, uint64 now) {
        output.SetExposure(50);
        output.Trigger(now);
    });

    EXPECT_EQ(io.InputBits(), 2);
    nowUsec = 1050;
    EXPECT_EQ(io.InputBits(), 0);
}

TEST_F(DeskIoTest, IsAsItWasAtFirstWhenItIsRestored)
{
    SetState(0, true);
    io.Enable(IoType::DIGITAL_INPUT, 1, false);
    io.UseSerialOutput(0, [](DeskSerialOutput& output) { output.Write(1, "a"); });

    io.RestoreFactoryState();

    EXPECT_EQ(io.InputBits(), 0);
    EXPECT_TRUE(io.IsEnabled(IoType::DIGITAL_INPUT, 1));
    io.UseSerialOutput(0, [](DeskSerialOutput& output) { EXPECT_EQ(output.SentCount(), 0u); });
}

TEST_F(DeskIoTest, IsUsedByManyThreadsAtOnce)
{
    constexpr int ROUNDS = 500;
    std::vector<std::thread> users;
    for (uint64 output = 0; output < 2; ++output)
    {
        users.emplace_back([this, output] {
            for (int round = 0; round < ROUNDS; ++round)
            {
                SetState(output, round % 2 == 0);
                io.Enable(IoType::DIGITAL_OUTPUT, output, true);
                io.UseSerialOutput(0, [](DeskSerialOutput& serial) { serial.Write(1, "x"); });
            }
            SetState(output, true);
        });
    }
    users.emplace_back([this] { // the sensor
        for (int round = 0; round < ROUNDS; ++round)
        {
            EXPECT_LT(io.InputBits(), 4);
        }
    });
    for (std::thread& user : users)
    {
        user.join();
    }

    EXPECT_EQ(io.InputBits(), 3);
    io.UseSerialOutput(0, [](DeskSerialOutput& serial) { EXPECT_EQ(serial.SentCount(), 2u * ROUNDS); });
}

} // namespace ZuHost
