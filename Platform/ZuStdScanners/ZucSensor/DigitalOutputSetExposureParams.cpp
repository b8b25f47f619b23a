#include "ZuStdScanners/ZucSensor/DigitalOutputSetExposureParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetExposureParams::DigitalOutputSetExposureParams()
{
    Register("exposure", "Exposure", exposure);
}

DigitalOutputSetExposureParams::~DigitalOutputSetExposureParams() = default;

} // namespace ZuStdScanners::ZucSensor
