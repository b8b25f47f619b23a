#include "ZuStdScanners/ZucSensor/QueryIoOutputEnabledParams.h"

namespace ZuStdScanners::ZucSensor
{

QueryIoOutputEnabledParams::QueryIoOutputEnabledParams()
{
    Register("ioType", "IoType", ioType);
}

QueryIoOutputEnabledParams::~QueryIoOutputEnabledParams() = default;

} // namespace ZuStdScanners::ZucSensor
