#include "ZuStdScanners/ZucSensor/AnalogOutputSetControlIdParams.h"

namespace ZuStdScanners::ZucSensor
{

AnalogOutputSetControlIdParams::AnalogOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

AnalogOutputSetControlIdParams::~AnalogOutputSetControlIdParams() = default;

} // namespace ZuStdScanners::ZucSensor
