#include "ZuStdScanners/ZucSensor/QueryIoOutputCountParams.h"

namespace ZuStdScanners::ZucSensor
{

QueryIoOutputCountParams::QueryIoOutputCountParams() : Group("")
{
    Register("ioType", "IoType", ioType);
}

QueryIoOutputCountParams::~QueryIoOutputCountParams() = default;

} // namespace ZuStdScanners::ZucSensor
