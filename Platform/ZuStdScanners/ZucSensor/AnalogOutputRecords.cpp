#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::AnalogOutputControlType);

namespace ZuStdScanners::ZucSensor
{

AnalogOutputEnqueueOutputParams::AnalogOutputEnqueueOutputParams()
{
    Register("current", "Current", current);
}

AnalogOutputEnqueueOutputParams::~AnalogOutputEnqueueOutputParams() = default;

AnalogOutputQueryConstraintResult::AnalogOutputQueryConstraintResult() : Group("")
{
    Register("absoluteMin", "AbsoluteMin", absoluteMin);
    Register("absoluteMax", "AbsoluteMax", absoluteMax);
}

AnalogOutputQueryConstraintResult::~AnalogOutputQueryConstraintResult() = default;

AnalogOutputSetControlIdParams::AnalogOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

AnalogOutputSetControlIdParams::~AnalogOutputSetControlIdParams() = default;

AnalogOutputSetControlTypeParams::AnalogOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

AnalogOutputSetControlTypeParams::~AnalogOutputSetControlTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor
