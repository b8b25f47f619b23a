#include "ZuControl/Control/ControlAnalogOutput.h"

#include "ZuApi/Logging.h"
#include "ZuControl/Control/HardwareResult.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"

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

} // namespace ZuControl
