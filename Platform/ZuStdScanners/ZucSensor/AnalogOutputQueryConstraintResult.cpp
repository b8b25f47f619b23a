#include "ZuStdScanners/ZucSensor/AnalogOutputQueryConstraintResult.h"

namespace ZuStdScanners::ZucSensor
{

AnalogOutputQueryConstraintResult::AnalogOutputQueryConstraintResult() : Group("")
{
    Register("absoluteMin", "AbsoluteMin", absoluteMin);
    Register("absoluteMax", "AbsoluteMax", absoluteMax);
}

AnalogOutputQueryConstraintResult::~AnalogOutputQueryConstraintResult() = default;

} // namespace ZuStdScanners::ZucSensor
