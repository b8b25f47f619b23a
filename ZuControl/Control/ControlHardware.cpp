#include "ZuControl/Control/ControlHardware.h"

#include "ZuApi/Logging.h"
#include "ZuControl/Control/HardwareResult.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"
#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"

#include <string>

namespace ZuControl
{

namespace ZucSensor = ZuStdScanners::ZucSensor;

ControlAnalogOutput::ControlAnalogOutput(uint64 newIndex, ZuScan::ISensor& usedSensor)
    : ControlHardwareBase(newIndex, usedSensor)
{
}

ControlAnalogOutput::~ControlAnalogOutput() = default;

IControlHardware::ZuHardwareIOType ControlAnalogOutput::HardwareIoType() const
{
    return ZuHardwareIOType::ANALOG_OUTPUT;
}

void ControlAnalogOutput::EnqueueOutput(double current)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::AnalogOutputEnqueueOutputParams>();
    params->current.Set(current);
    ZU_LOG_INFO("index:%d, current:%f", ShownIndex(), current);
    target.InvokeAction("analogOutEnqueueOutput", params);
}

ControlAnalogOutput::AnalogOutputConstraint ControlAnalogOutput::GetConstraints()
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::IoIndexParams>();
    ZU_LOG_INFO("index:%d", ShownIndex());
    auto const result = target.InvokeAction("analogOutQueryConstraint", params);
    auto const& given = HardwareResult<ZucSensor::AnalogOutputQueryConstraintResult>(result);
    AnalogOutputConstraint const constraint{given.absoluteMin.Get(), given.absoluteMax.Get()};
    ZU_LOG_INFO("absoluteMin:%f, absoluteMax:%f", constraint.absoluteMin, constraint.absoluteMax);
    return constraint;
}

void ControlAnalogOutput::SetControlId(uint32 controlId)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::AnalogOutputSetControlIdParams>();
    params->controlId.Set(controlId);
    ZU_LOG_INFO("index:%d, controlId:%u", ShownIndex(), controlId);
    target.InvokeAction("analogOutSetControlId", params);
}

void ControlAnalogOutput::SetControlType(AnalogOutputControlType controlType)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::AnalogOutputSetControlTypeParams>();
    params->controlType.Set(ZucSensor::AnalogOutputControlType{static_cast<uint8>(controlType)});
    ZU_LOG_INFO("index:%d, controlType:%d", ShownIndex(), static_cast<int>(controlType));
    target.InvokeAction("analogOutSetControlType", params);
}

namespace ZucSensor = ZuStdScanners::ZucSensor;

ControlDigitalInput::ControlDigitalInput(uint64 newIndex, ZuScan::ISensor& usedSensor)
    : ControlHardwareBase(newIndex, usedSensor)
{
}

ControlDigitalInput::~ControlDigitalInput() = default;

IControlHardware::ZuHardwareIOType ControlDigitalInput::HardwareIoType() const
{
    return ZuHardwareIOType::DIGITAL_INPUT;
}

void ControlDigitalInput::ClearSettings()
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::IoIndexParams>();
    ZU_LOG_INFO("index:%d", ShownIndex());
    target.InvokeAction("digitalInClear", params);
}

void ControlDigitalInput::SetPinTypeToInput(uint64 pin)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalInputSetPinTypeParams>();
    params->pin.Set(pin);
    ZU_LOG_INFO("index:%d, pin:%u", ShownIndex(), static_cast<uint32>(pin)); // the command holds all 64 bits
    target.InvokeAction("digitalInSetPinType", params);
}

void ControlDigitalInput::EnableEvents(uint64 pin, int32 enable)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalInputEnableEventsParams>();
    params->pin.Set(pin);
    params->enable.Set(enable != 0);
    ZU_LOG_INFO("index:%d, pin:%d, enable:%d", ShownIndex(), static_cast<int32>(pin), enable);
    target.InvokeAction("digitalInEnableEvents", params);
}

namespace ZucSensor = ZuStdScanners::ZucSensor;

ControlDigitalOutput::ControlDigitalOutput(uint64 newIndex, ZuScan::ISensor& usedSensor)
    : ControlHardwareBase(newIndex, usedSensor)
{
}

ControlDigitalOutput::~ControlDigitalOutput() = default;

IControlHardware::ZuHardwareIOType ControlDigitalOutput::HardwareIoType() const
{
    return ZuHardwareIOType::DIGITAL_OUTPUT;
}

void ControlDigitalOutput::ClearSettings()
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::IoIndexParams>();
    ZU_LOG_INFO("index:%d", ShownIndex());
    target.InvokeAction("digitalOutClear", params);
}

void ControlDigitalOutput::SetControlType(DigitalOutputControlType controlType)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalOutputSetControlTypeParams>();
    params->controlType.Set(ZucSensor::DigitalOutputControlType{static_cast<uint8>(controlType)});
    ZU_LOG_INFO("index:%d, controlType:%d", ShownIndex(), static_cast<int>(controlType));
    target.InvokeAction("digitalOutSetControlType", params);
}

void ControlDigitalOutput::SetControlId(uint32 controlId)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalOutputSetControlIdParams>();
    params->controlId.Set(controlId);
    ZU_LOG_INFO("index:%d, controlId:%u", ShownIndex(), controlId);
    target.InvokeAction("digitalOutSetControlId", params);
}

void ControlDigitalOutput::SetControlExposure(uint64 exposure)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalOutputSetExposureParams>();
    params->exposure.Set(exposure);
    ZU_LOG_INFO("index:%d, exposure:%llu", ShownIndex(), static_cast<unsigned long long>(exposure));
    target.InvokeAction("digitalOutSetExposure", params);
}

void ControlDigitalOutput::SetControlPolarity(bool isActiveHigh)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalOutputSetPolarityParams>();
    params->isActiveHigh.Set(isActiveHigh);
    ZU_LOG_INFO("index:%d, isActiveHigh:%d", ShownIndex(), isActiveHigh);
    target.InvokeAction("digitalOutSetPolarity", params);
}

void ControlDigitalOutput::SetControlState(bool state)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::DigitalOutputSetStateParams>();
    params->state.Set(state);
    ZU_LOG_INFO("index:%d, state:%d", ShownIndex(), state);
    target.InvokeAction("digitalOutSetState", params);
}

void ControlDigitalOutput::Trigger()
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::IoIndexParams>();
    ZU_LOG_INFO("index:%d", ShownIndex());
    target.InvokeAction("digitalOutTrigger", params);
}

namespace ZucSensor = ZuStdScanners::ZucSensor;

ControlSerialOutput::ControlSerialOutput(uint64 newIndex, ZuScan::ISensor& usedSensor)
    : ControlHardwareBase(newIndex, usedSensor)
{
}

ControlSerialOutput::~ControlSerialOutput() = default;

IControlHardware::ZuHardwareIOType ControlSerialOutput::HardwareIoType() const
{
    return ZuHardwareIOType::SERIAL_OUTPUT;
}

void ControlSerialOutput::SetControlBitRate(uint32 bitRate)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::SerialOutputSetBitRateParams>();
    params->bitRate.Set(bitRate);
    ZU_LOG_INFO("index:%d, bitRate:%u", ShownIndex(), bitRate);
    target.InvokeAction("serialOutSetBitRate", params);
}

void ControlSerialOutput::SetControlId(uint32 controlId)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::SerialOutputSetControlIdParams>();
    params->controlId.Set(controlId);
    ZU_LOG_INFO("index:%d, controlId:%u", ShownIndex(), controlId);
    target.InvokeAction("serialOutSetControlId", params);
}

void ControlSerialOutput::SetControlMode(SerialOutputControlMode controlMode)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::SerialOutputSetModeParams>();
    params->controlMode.Set(ZucSensor::SerialOutputControlMode{static_cast<uint8>(controlMode)});
    ZU_LOG_INFO("index:%d, controlMode:%d", ShownIndex(), static_cast<int>(controlMode));
    target.InvokeAction("serialOutSetMode", params);
}

void ControlSerialOutput::SetControlType(SerialOutputControlType controlType)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::SerialOutputSetControlTypeParams>();
    params->controlType.Set(ZucSensor::SerialOutputControlType{static_cast<uint8>(controlType)});
    ZU_LOG_INFO("index:%d, controlType:%d", ShownIndex(), static_cast<int>(controlType));
    target.InvokeAction("serialOutSetControlType", params);
}

void ControlSerialOutput::Write(char const* text)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<ZucSensor::SerialOutputWriteParams>();
    std::string const buffer(text);
    auto const shownSize = static_cast<int>(buffer.size()); // no protocol has texts that long
    params->size.Set(buffer.size());
    params->buffer.Set(buffer);
    ZU_LOG_INFO("index:%d, size:%d, buffer:%.*s", ShownIndex(), shownSize, shownSize, buffer.c_str());
    target.InvokeAction("serialOutWrite", params);
}

} // namespace ZuControl
