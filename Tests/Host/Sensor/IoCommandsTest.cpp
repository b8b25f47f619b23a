#include "Host/Sensor/CommandTable.h"

#include "Host/Sensor/DeskIo.h"
#include "Support/Refusal.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using namespace ZuControl;
using namespace ZuStdScanners::ZucSensor;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

class SensorWithIo final : public ZuScan::ISensor
{
public:
    explicit SensorWithIo(DeskIo& io)
    {
        OfferIoCommands(commands, io);
    }

    ZuScan::ICommandTarget* CommandTarget() override
    {
        return &commands;
    }

    CommandTable commands;
};

/// Commands from the module to the sensor, and their effect on the simulated sensor.
class IoCommands : public testing::Test
{
protected:
    uint64 nowUsec = 5000;
    DeskIo io{[this] { return nowUsec; }};
    SensorWithIo sensor{io};
    ControlDigitalOutput output{1, sensor};
    ControlDigitalInput input{0, sensor};
    ControlAnalogOutput analog{1, sensor};
    ControlSerialOutput serial{0, sensor};
};

} // namespace

TEST_F(IoCommands, AreTheseByName)
{
    std::vector<std::string> ids;
    for (ZuScan::ActionInfo const& command : sensor.commands.ListActions())
    {
        ids.push_back(command.Id());
        EXPECT_NE(sensor.commands.GetActionParams(command.Id()), nullptr) << command.Id();
    }

    EXPECT_EQ(ids,
              (std::vector<std::string>{"enableIoOutputAt",      "queryIoOutputEnabledAt",   "queryIoOutputCount",
                                        "digitalOutClear",       "digitalOutSetControlType", "digitalOutSetControlId",
                                        "digitalOutSetExposure", "digitalOutSetPolarity",    "digitalOutSetState",
                                        "digitalOutTrigger",     "digitalInClear",           "digitalInSetPinType",
                                        "digitalInEnableEvents", "analogOutEnqueueOutput",   "analogOutQueryConstraint",
                                        "analogOutSetControlId", "analogOutSetControlType",  "serialOutSetBitRate",
                                        "serialOutSetControlId", "serialOutSetMode",         "serialOutSetControlType",
                                        "serialOutWrite"}));
}

TEST_F(IoCommands, RefuseOtherNamesAndArguments)
{
    EXPECT_EQ(RefusalOf([this] { sensor.commands.GetActionParams("align"); }),
              (Refusal{-999, "There is no command 'align'"}));
    EXPECT_EQ(RefusalOf([this] { sensor.commands.InvokeAction("align", nullptr); }),
              (Refusal{-999, "There is no command 'align'"}));
    EXPECT_EQ(RefusalOf([this] { sensor.commands.InvokeAction("digitalOutSetState", nullptr); }),
              (Refusal{-997, "The command 'digitalOutSetState' takes other arguments"}));
    EXPECT_EQ(
        RefusalOf([this] { sensor.commands.InvokeAction("digitalOutSetState", std::make_shared<IoIndexParams>()); }),
        (Refusal{-997, "The command 'digitalOutSetState' takes other arguments"}));
}

TEST_F(IoCommands, TellHowManyThereAre)
{
    auto const params = std::make_shared<QueryIoOutputCountParams>();
    params->ioType.Set(IoType::ANALOG_OUTPUT);

    auto const result = sensor.commands.InvokeAction("queryIoOutputCount", params);

    EXPECT_EQ(dynamic_cast<QueryIoOutputCountResult&>(*result).count.Get(), 2u);
    params->ioType.Set(IoType{0});
    EXPECT_EQ(RefusalOf([&] { sensor.commands.InvokeAction("queryIoOutputCount", params); }).status, -999);
}

TEST_F(IoCommands, SwitchOnAndOff)
{
    EXPECT_TRUE(output.IsEnabled());

    output.Enable(false);

    EXPECT_FALSE(output.IsEnabled());
    EXPECT_TRUE(ControlDigitalOutput(0, sensor).IsEnabled());
    EXPECT_TRUE(ControlDigitalInput(1, sensor).IsEnabled());
    output.Enable(true);
    EXPECT_TRUE(output.IsEnabled());
}

TEST_F(IoCommands, DriveADigitalOutput)
{
    output.SetControlState(true);
    EXPECT_EQ(io.InputBits(), 2);

    output.SetControlPolarity(false);
    EXPECT_EQ(io.InputBits(), 0);

    output.ClearSettings();
    EXPECT_EQ(io.InputBits(), 0);
    output.SetControlExposure(100);
    output.Trigger();
    EXPECT_EQ(io.InputBits(), 2);
    nowUsec += 100;
    EXPECT_EQ(io.InputBits(), 0);

    output.SetControlId(9);
    io.UseDigitalOutput(1, [](DeskDigitalOutput& used, uint64) { EXPECT_EQ(used.ControlId(), 9u); });
    output.SetControlType(ControlDigitalOutput::DigitalOutputControlType{1});
    EXPECT_EQ(RefusalOf([this] { output.SetControlState(true); }).status, -1000);
    EXPECT_EQ(RefusalOf([this] { output.SetControlExposure(uint64{1} << 40); }),
              (Refusal{-997, "A pulse cannot last 1099511627776 us"}));
}

TEST_F(IoCommands, SetADigitalInput)
{
    output.SetControlState(true);

    input.SetPinTypeToInput(1);
    input.EnableEvents(1, 7);
    EXPECT_EQ(io.InputBits(), 3);
    io.UseDigitalInput(0, [](DeskDigitalInput& used) { EXPECT_TRUE(used.HasEvents(1)); });

    input.ClearSettings();
    EXPECT_EQ(io.InputBits(), 2);
    EXPECT_EQ(RefusalOf([this] { input.SetPinTypeToInput(2); }), (Refusal{-997, "A digital input has no pin 2"}));
}

TEST_F(IoCommands, DriveAnAnalogOutput)
{
    analog.EnqueueOutput(12.5);
    analog.SetControlId(4);
    io.UseAnalogOutput(1, [](DeskAnalogOutput& used, uint64 now) {
        EXPECT_EQ(used.Current(now), 12.5);
        EXPECT_EQ(used.ControlId(), 4u);
    });

    ControlAnalogOutput::AnalogOutputConstraint const range = analog.GetConstraints();
    EXPECT_EQ(range.absoluteMin, 4);
    EXPECT_EQ(range.absoluteMax, 20);

    analog.SetControlType(ControlAnalogOutput::AnalogOutputControlType{1});
    EXPECT_EQ(RefusalOf([this] { analog.EnqueueOutput(5); }).status, -1000);
    EXPECT_EQ(RefusalOf([this] { ControlAnalogOutput(2, sensor).GetConstraints(); }),
              (Refusal{-999, "The sensor has no analog output 2"}));
}

TEST_F(IoCommands, DriveASerialOutput)
{
    serial.SetControlBitRate(9600);
    serial.SetControlId(6);
    serial.SetControlMode(ControlSerialOutput::SerialOutputControlMode{1});
    serial.Write("text");

    io.UseSerialOutput(0, [](DeskSerialOutput& used) {
        EXPECT_EQ(used.BitRate(), 9600u);
        EXPECT_EQ(used.ControlId(), 6u);
        EXPECT_EQ(used.Mode(), SerialOutputControlMode::BINARY);
        EXPECT_EQ(used.Sent(), "text");
    });
    serial.SetControlType(ControlSerialOutput::SerialOutputControlType{1});
    EXPECT_EQ(RefusalOf([this] { serial.Write("text"); }).status, -1000);
}

} // namespace ZuHost
