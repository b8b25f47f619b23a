#include "ZuStdScanners/ZucSensor/SerialOutputSetControlIdParams.h"

namespace ZuStdScanners::ZucSensor
{

SerialOutputSetControlIdParams::SerialOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

SerialOutputSetControlIdParams::~SerialOutputSetControlIdParams() = default;

} // namespace ZuStdScanners::ZucSensor
