#include "ZuStdScanners/ZucSensor/SerialOutputSetModeParams.h"

namespace ZuStdScanners::ZucSensor
{

SerialOutputSetModeParams::SerialOutputSetModeParams()
{
    Register("controlMode", "ControlMode", controlMode);
}

SerialOutputSetModeParams::~SerialOutputSetModeParams() = default;

} // namespace ZuStdScanners::ZucSensor
