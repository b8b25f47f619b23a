#include "ZuStdScanners/ZucSensor/QueryIoOutputCountResult.h"

namespace ZuStdScanners::ZucSensor
{

QueryIoOutputCountResult::QueryIoOutputCountResult() : Group("")
{
    Register("count", "Count", count);
}

QueryIoOutputCountResult::~QueryIoOutputCountResult() = default;

} // namespace ZuStdScanners::ZucSensor
