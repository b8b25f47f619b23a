#include "ZuControl/Control/ControlSerialOutput.h"

#include "ZuApi/Logging.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"

#include <string>

namespace ZuControl
{

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
