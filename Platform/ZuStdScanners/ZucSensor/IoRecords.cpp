#include "ZuStdScanners/ZucSensor/IoRecords.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::IoType);

namespace ZuStdScanners::ZucSensor
{

IoIndexParams::IoIndexParams() : Group("")
{
    Register("index", "Index", index);
}

IoIndexParams::~IoIndexParams() = default;

EnableIoOutputAtParams::EnableIoOutputAtParams()
{
    Register("ioType", "IoType", ioType);
    Register("enable", "Enable", enable);
}

EnableIoOutputAtParams::~EnableIoOutputAtParams() = default;

QueryIoOutputCountParams::QueryIoOutputCountParams() : Group("")
{
    Register("ioType", "IoType", ioType);
}

QueryIoOutputCountParams::~QueryIoOutputCountParams() = default;

QueryIoOutputCountResult::QueryIoOutputCountResult() : Group("")
{
    Register("count", "Count", count);
}

QueryIoOutputCountResult::~QueryIoOutputCountResult() = default;

QueryIoOutputEnabledParams::QueryIoOutputEnabledParams()
{
    Register("ioType", "IoType", ioType);
}

QueryIoOutputEnabledParams::~QueryIoOutputEnabledParams() = default;

QueryIoOutputEnabledResult::QueryIoOutputEnabledResult() : Group("")
{
    Register("enabled", "Enabled", enabled);
}

QueryIoOutputEnabledResult::~QueryIoOutputEnabledResult() = default;

} // namespace ZuStdScanners::ZucSensor
