#include "ZuStdScanners/ZucSensor/QueryIoOutputEnabledResult.h"

namespace ZuStdScanners::ZucSensor
{

QueryIoOutputEnabledResult::QueryIoOutputEnabledResult() : Group("")
{
    Register("enabled", "Enabled", enabled);
}

QueryIoOutputEnabledResult::~QueryIoOutputEnabledResult() = default;

} // namespace ZuStdScanners::ZucSensor
