#include "ZuStdScanners/ZucSensor/AnalogOutputEnqueueOutputParams.h"

namespace ZuStdScanners::ZucSensor
{

AnalogOutputEnqueueOutputParams::AnalogOutputEnqueueOutputParams()
{
    Register("current", "Current", current);
}

AnalogOutputEnqueueOutputParams::~AnalogOutputEnqueueOutputParams() = default;

} // namespace ZuStdScanners::ZucSensor
