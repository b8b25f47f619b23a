#include "ZuStdScanners/ZucSensor/DigitalOutputSetStateParams.h"

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetStateParams::DigitalOutputSetStateParams()
{
    Register("state", "State", state);
}

DigitalOutputSetStateParams::~DigitalOutputSetStateParams() = default;

} // namespace ZuStdScanners::ZucSensor
