#include "ZuStdScanners/ZucSensor/SerialOutputSetControlTypeParams.h"

namespace ZuStdScanners::ZucSensor
{

SerialOutputSetControlTypeParams::SerialOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

SerialOutputSetControlTypeParams::~SerialOutputSetControlTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor
