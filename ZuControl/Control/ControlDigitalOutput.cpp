#include "ZuControl/Control/ControlDigitalOutput.h"

#include "ZuApi/Logging.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"

namespace ZuControl
{

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

} // namespace ZuControl
