#include "ZuControl/Control/ControlHardwareBase.h"

#include "Support/FakeSensor.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace ZuControl
{

using Calls = ZuTest::CallLog::Calls;
using ZuTest::Info;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// One output or input of each kind, with different indexes.
struct Hardware
{
    explicit Hardware(ZuScan::ISensor& sensor)
        : analog(0, sensor), serial(1, sensor), output(2, sensor), input(3, sensor)
    {
    }

    ControlAnalogOutput analog;
    ControlSerialOutput serial;
    ControlDigitalOutput output;
    ControlDigitalInput input;
};

struct CommandCase
{
    char const* name;
    char const* function;
    void (*call)(Hardware&);
    char const* command;
    char const* line;
};

constexpr uint64 BEYOND_32_BITS = uint64{1} << 40;

CommandCase const COMMANDS[] = {
    {"EnablesAnalog", "ControlHardwareBase::Enable", [](Hardware& all) { all.analog.Enable(true); },
     R"(enableIoOutputAt {"enable":true,"index":0,"ioType":1})", "ioType:1, index:0, enable:1"},
    {"EnablesSerial", "ControlHardwareBase::Enable", [](Hardware& all) { all.serial.Enable(true); },
     R"(enableIoOutputAt {"enable":true,"index":1,"ioType":2})", "ioType:2, index:1, enable:1"},
    {"EnablesOutput", "ControlHardwareBase::Enable", [](Hardware& all) { all.output.Enable(true); },
     R"(enableIoOutputAt {"enable":true,"index":2,"ioType":3})", "ioType:3, index:2, enable:1"},
    {"EnablesInput", "ControlHardwareBase::Enable", [](Hardware& all) { all.input.Enable(true); },
     R"(enableIoOutputAt {"enable":true,"index":3,"ioType":4})", "ioType:4, index:3, enable:1"},
    {"DisablesInput", "ControlHardwareBase::Enable", [](Hardware& all) { all.input.Enable(false); },
     R"(enableIoOutputAt {"enable":false,"index":3,"ioType":4})", "ioType:4, index:3, enable:0"},
    {"OutputClears", "ControlDigitalOutput::ClearSettings", [](Hardware& all) { all.output.ClearSettings(); },
     R"(digitalOutClear {"index":2})", "index:2"},
    {"OutputType", "ControlDigitalOutput::SetControlType",
     [](Hardware& all) { all.output.SetControlType(ControlDigitalOutput::DigitalOutputControlType{200}); },
     R"(digitalOutSetControlType {"controlType":200,"index":2})", "index:2, controlType:200"},
    {"OutputId", "ControlDigitalOutput::SetControlId", [](Hardware& all) { all.output.SetControlId(4294967295u); },
     R"(digitalOutSetControlId {"controlId":4294967295,"index":2})", "index:2, controlId:4294967295"},
    {"OutputExposure", "ControlDigitalOutput::SetControlExposure",
     [](Hardware& all) { all.output.SetControlExposure(BEYOND_32_BITS); },
     R"(digitalOutSetExposure {"exposure":1099511627776,"index":2})", "index:2, exposure:1099511627776"},
    {"OutputPolarity", "ControlDigitalOutput::SetControlPolarity",
     [](Hardware& all) { all.output.SetControlPolarity(true); },
     R"(digitalOutSetPolarity {"index":2,"isActiveHigh":true})", "index:2, isActiveHigh:1"},
    {"OutputState", "ControlDigitalOutput::SetControlState", [](Hardware& all) { all.output.SetControlState(true); },
     R"(digitalOutSetState {"index":2,"state":true})", "index:2, state:1"},
    {"OutputTrigger", "ControlDigitalOutput::Trigger", [](Hardware& all) { all.output.Trigger(); },
     R"(digitalOutTrigger {"index":2})", "index:2"},
    {"InputClears", "ControlDigitalInput::ClearSettings", [](Hardware& all) { all.input.ClearSettings(); },
     R"(digitalInClear {"index":3})", "index:3"},
    {"InputPin", "ControlDigitalInput::SetPinTypeToInput", [](Hardware& all) { all.input.SetPinTypeToInput(7); },
     R"(digitalInSetPinType {"index":3,"pin":7})", "index:3, pin:7"},
    {"InputPinBeyond32Bits", "ControlDigitalInput::SetPinTypeToInput",
     [](Hardware& all) { all.input.SetPinTypeToInput(BEYOND_32_BITS + 5); },
     R"(digitalInSetPinType {"index":3,"pin":1099511627781})", "index:3, pin:5"},
    {"InputPinIsUnsigned", "ControlDigitalInput::SetPinTypeToInput",
     [](Hardware& all) { all.input.SetPinTypeToInput(4294967295u); },
     R"(digitalInSetPinType {"index":3,"pin":4294967295})", "index:3, pin:4294967295"},
    {"InputEvents", "ControlDigitalInput::EnableEvents", [](Hardware& all) { all.input.EnableEvents(1, 7); },
     R"(digitalInEnableEvents {"enable":true,"index":3,"pin":1})", "index:3, pin:1, enable:7"},
    {"InputNoEvents", "ControlDigitalInput::EnableEvents", [](Hardware& all) { all.input.EnableEvents(1, 0); },
     R"(digitalInEnableEvents {"enable":false,"index":3,"pin":1})", "index:3, pin:1, enable:0"},
    {"InputEventsPinIsSigned", "ControlDigitalInput::EnableEvents",
     [](Hardware& all) { all.input.EnableEvents(4294967295u, -1); },
     R"(digitalInEnableEvents {"enable":true,"index":3,"pin":4294967295})", "index:3, pin:-1, enable:-1"},
    {"AnalogCurrent", "ControlAnalogOutput::EnqueueOutput", [](Hardware& all) { all.analog.EnqueueOutput(12.5); },
     R"(analogOutEnqueueOutput {"current":12.5,"index":0})", "index:0, current:12.500000"},
    {"AnalogId", "ControlAnalogOutput::SetControlId", [](Hardware& all) { all.analog.SetControlId(5); },
     R"(analogOutSetControlId {"controlId":5,"index":0})", "index:0, controlId:5"},
    {"AnalogType", "ControlAnalogOutput::SetControlType",
     [](Hardware& all) { all.analog.SetControlType(ControlAnalogOutput::AnalogOutputControlType{1}); },
     R"(analogOutSetControlType {"controlType":1,"index":0})", "index:0, controlType:1"},
    {"SerialRate", "ControlSerialOutput::SetControlBitRate",
     [](Hardware& all) { all.serial.SetControlBitRate(115200); }, R"(serialOutSetBitRate {"bitRate":115200,"index":1})",
     "index:1, bitRate:115200"},
    {"SerialId", "ControlSerialOutput::SetControlId", [](Hardware& all) { all.serial.SetControlId(6); },
     R"(serialOutSetControlId {"controlId":6,"index":1})", "index:1, controlId:6"},
    {"SerialMode", "ControlSerialOutput::SetControlMode",
     [](Hardware& all) { all.serial.SetControlMode(ControlSerialOutput::SerialOutputControlMode{2}); },
     R"(serialOutSetMode {"controlMode":2,"index":1})", "index:1, controlMode:2"},
    {"SerialType", "ControlSerialOutput::SetControlType",
     [](Hardware& all) { all.serial.SetControlType(ControlSerialOutput::SerialOutputControlType{3}); },
     R"(serialOutSetControlType {"controlType":3,"index":1})", "index:1, controlType:3"},
    {"SerialText", "ControlSerialOutput::Write", [](Hardware& all) { all.serial.Write("a %s\n"); },
     R"(serialOutWrite {"buffer":"a %s\n","index":1,"size":5})", "index:1, size:5, buffer:a %s\n"},
    {"SerialNothing", "ControlSerialOutput::Write", [](Hardware& all) { all.serial.Write(""); },
     R"(serialOutWrite {"buffer":"","index":1,"size":0})", "index:1, size:0, buffer:"},
};

} // namespace

class ControlHardwareBaseTest : public testing::Test
{
protected:
    static std::string Label(std::string const& function)
    {
        return "ZuControl::" + function;
    }

    void AnswerEnabled(bool enabled)
    {
        sensor.on["queryIoOutputEnabledAt"] = [enabled](Zu::Params::Group const&) {
            auto result = std::make_shared<ZuStdScanners::ZucSensor::QueryIoOutputEnabledResult>();
            result->enabled.Set(enabled);
            return result;
        };
    }

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::FakeSensor sensor{calls};
    Hardware all{sensor};
};

class HardwareCommand : public ControlHardwareBaseTest, public testing::WithParamInterface<CommandCase>
{
};

TEST_P(HardwareCommand, IsSentAsItStands)
{
    GetParam().call(all);

    EXPECT_EQ(calls.All(), (Calls{GetParam().command}));
    EXPECT_EQ(log.Lines(), (std::vector{Info(Label(GetParam().function), GetParam().line)}));
}

TEST_P(HardwareCommand, IsSentEachTime)
{
    GetParam().call(all);
    GetParam().call(all);

    EXPECT_EQ(calls.All(), (Calls{GetParam().command, GetParam().command}));
}

TEST_P(HardwareCommand, IsRefusedBeforeAnythingWhenTheSensorTakesNone)
{
    sensor.takesCommands = false;

    try
    {
        GetParam().call(all);
        FAIL() << "nothing was thrown";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -1000);
        EXPECT_STREQ(exception.what(), "");
        EXPECT_EQ(exception.Function(), Label(GetParam().function));
    }

    EXPECT_EQ(calls.All(), Calls{});
    EXPECT_TRUE(log.Lines().empty());
}

TEST_P(HardwareCommand, PassesOnWhatTheSensorThrowsAndStartsAfresh)
{
    std::string const command = GetParam().command;
    bool isFailing = true;
    sensor.on[command.substr(0, command.find(' '))] =
        [&isFailing](Zu::Params::Group const&) -> ZuTest::FakeSensor::Result {
        if (isFailing)
        {
            ZU_THROW(-977, "no room");
        }
        return nullptr;
    };

    EXPECT_EQ(RefusalOf([this] { GetParam().call(all); }), (Refusal{-977, "no room"}));
    isFailing = false;
    EXPECT_EQ(RefusalOf([this] { GetParam().call(all); }), (Refusal{1, ""}));

    EXPECT_EQ(calls.All(), (Calls{command, command}));
}

INSTANTIATE_TEST_SUITE_P(All, HardwareCommand, testing::ValuesIn(COMMANDS),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ControlHardwareBaseTest, TellsItsKind)
{
    using Kind = IControlHardware::ZuHardwareIOType;

    EXPECT_EQ(all.analog.HardwareIoType(), Kind{1});
    EXPECT_EQ(all.serial.HardwareIoType(), Kind{2});
    EXPECT_EQ(all.output.HardwareIoType(), Kind{3});
    EXPECT_EQ(all.input.HardwareIoType(), Kind{4});
}

TEST_F(ControlHardwareBaseTest, SendsItsKindBesideAnIndexThatOthersHaveToo)
{
    ControlDigitalOutput output(0, sensor);
    ControlDigitalInput input(0, sensor);

    output.Enable(true);
    input.Enable(true);

    EXPECT_EQ(calls.All(), (Calls{R"(enableIoOutputAt {"enable":true,"index":0,"ioType":3})",
                                  R"(enableIoOutputAt {"enable":true,"index":0,"ioType":4})"}));
}

TEST_F(ControlHardwareBaseTest, AsksTheSensorEachTimeWhetherItIsOn)
{
    char const* const label = "ZuControl::ControlHardwareBase::IsEnabled";
    AnswerEnabled(true);
    EXPECT_TRUE(all.output.IsEnabled());
    AnswerEnabled(false);
    EXPECT_FALSE(all.output.IsEnabled());

    char const* const query = R"(queryIoOutputEnabledAt {"index":2,"ioType":3})";
    EXPECT_EQ(calls.All(), (Calls{query, query}));
    EXPECT_EQ(log.Lines(), (std::vector{Info(label, "ioType:3, index:2"), Info(label, "isEnabled:1"),
                                        Info(label, "ioType:3, index:2"), Info(label, "isEnabled:0")}));
}

TEST_F(ControlHardwareBaseTest, RefusesToAskASensorThatTakesNoCommands)
{
    sensor.takesCommands = false;

    EXPECT_EQ(RefusalOf([this] { all.input.IsEnabled(); }), (Refusal{-1000, ""}));
    EXPECT_EQ(RefusalOf([this] { all.analog.GetConstraints(); }), (Refusal{-1000, ""}));

    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlHardwareBaseTest, TakesNoOtherAnswer)
{
    auto const other = [](Zu::Params::Group const&) { return std::make_shared<Zu::Params::Group>(); };
    sensor.on["queryIoOutputEnabledAt"] = other;
    sensor.on["analogOutQueryConstraint"] = other;

    EXPECT_THROW(all.output.IsEnabled(), std::bad_cast);
    EXPECT_THROW(all.analog.GetConstraints(), std::bad_cast);

    sensor.on.clear(); // no answer at all
    EXPECT_THROW(all.output.IsEnabled(), std::bad_cast);
    EXPECT_THROW(all.analog.GetConstraints(), std::bad_cast);
    EXPECT_EQ(log.CountOfText("ioType:3, index:2"), 2u);
    EXPECT_EQ(log.CountOfText("index:0"), 2u);
    EXPECT_EQ(log.Lines().size(), 4u);
}

TEST_F(ControlHardwareBaseTest, ReadsTheRangeOfAnAnalogOutput)
{
    char const* const label = "ZuControl::ControlAnalogOutput::GetConstraints";
    sensor.on["analogOutQueryConstraint"] = [this](Zu::Params::Group const&) {
        EXPECT_EQ(log.Lines().size(), 1u); // one line before the command
        auto result = std::make_shared<ZuStdScanners::ZucSensor::AnalogOutputQueryConstraintResult>();
        result->absoluteMin.Set(4);
        result->absoluteMax.Set(20.25);
        return result;
    };

    ControlAnalogOutput::AnalogOutputConstraint const range = all.analog.GetConstraints();

    EXPECT_EQ(range.absoluteMin, 4);
    EXPECT_EQ(range.absoluteMax, 20.25);
    EXPECT_EQ(calls.All(), (Calls{R"(analogOutQueryConstraint {"index":0})"}));
    EXPECT_EQ(log.Lines(),
              (std::vector{Info(label, "index:0"), Info(label, "absoluteMin:4.000000, absoluteMax:20.250000")}));
}

TEST_F(ControlHardwareBaseTest, SendsATextUpToItsEnd)
{
    all.serial.Write("ab\0cd");

    EXPECT_EQ(calls.All(), (Calls{R"(serialOutWrite {"buffer":"ab","index":1,"size":2})"}));
}

TEST_F(ControlHardwareBaseTest, IsCopiedWithItsPlaceAndItsSensor)
{
    ControlDigitalOutput copy(all.output);

    copy.Trigger();

    EXPECT_EQ(calls.All(), (Calls{R"(digitalOutTrigger {"index":2})"}));
}

} // namespace ZuControl
