#include "ZuStdScanners/ZucSensor/AnalogOutputSetControlTypeParams.h"

namespace ZuStdScanners::ZucSensor
{

AnalogOutputSetControlTypeParams::AnalogOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

AnalogOutputSetControlTypeParams::~AnalogOutputSetControlTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor
