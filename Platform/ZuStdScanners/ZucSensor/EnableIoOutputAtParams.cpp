#include "ZuStdScanners/ZucSensor/EnableIoOutputAtParams.h"

namespace ZuStdScanners::ZucSensor
{

EnableIoOutputAtParams::EnableIoOutputAtParams()
{
    Register("ioType", "IoType", ioType);
    Register("enable", "Enable", enable);
}

EnableIoOutputAtParams::~EnableIoOutputAtParams() = default;

} // namespace ZuStdScanners::ZucSensor
