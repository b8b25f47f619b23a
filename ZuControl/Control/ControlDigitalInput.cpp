#include "ZuControl/Control/ControlDigitalInput.h"

#include "ZuApi/Logging.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"

namespace ZuControl
{

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

} // namespace ZuControl
