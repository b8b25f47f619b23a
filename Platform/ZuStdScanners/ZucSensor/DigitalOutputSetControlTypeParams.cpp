#include "ZuStdScanners/ZucSensor/DigitalOutputSetControlTypeParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetControlTypeParams::DigitalOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

DigitalOutputSetControlTypeParams::~DigitalOutputSetControlTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor
