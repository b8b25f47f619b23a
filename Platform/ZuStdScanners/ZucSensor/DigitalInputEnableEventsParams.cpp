#include "ZuStdScanners/ZucSensor/DigitalInputEnableEventsParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalInputEnableEventsParams::DigitalInputEnableEventsParams()
{
    Register("pin", "Pin", pin);
    Register("enable", "Enable", enable);
}

DigitalInputEnableEventsParams::~DigitalInputEnableEventsParams() = default;

} // namespace ZuStdScanners::ZucSensor
