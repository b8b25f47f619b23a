#include "ZuStdScanners/ZucSensor/DigitalOutputSetPolarityParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetPolarityParams::DigitalOutputSetPolarityParams()
{
    Register("isActiveHigh", "IsActiveHigh", isActiveHigh);
}

DigitalOutputSetPolarityParams::~DigitalOutputSetPolarityParams() = default;

} // namespace ZuStdScanners::ZucSensor
