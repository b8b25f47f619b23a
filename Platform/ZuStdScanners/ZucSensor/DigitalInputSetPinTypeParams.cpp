#include "ZuStdScanners/ZucSensor/DigitalInputSetPinTypeParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalInputSetPinTypeParams::DigitalInputSetPinTypeParams()
{
    Register("pin", "Pin", pin);
}

DigitalInputSetPinTypeParams::~DigitalInputSetPinTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor
