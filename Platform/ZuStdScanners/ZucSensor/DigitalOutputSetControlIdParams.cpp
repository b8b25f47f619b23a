#include "ZuStdScanners/ZucSensor/DigitalOutputSetControlIdParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetControlIdParams::DigitalOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

DigitalOutputSetControlIdParams::~DigitalOutputSetControlIdParams() = default;

} // namespace ZuStdScanners::ZucSensor
