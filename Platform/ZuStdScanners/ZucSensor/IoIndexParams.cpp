#include "ZuStdScanners/ZucSensor/IoIndexParams.h"

namespace ZuStdScanners::ZucSensor
{

IoIndexParams::IoIndexParams() : Group("")
{
    Register("index", "Index", index);
}

IoIndexParams::~IoIndexParams() = default;

} // namespace ZuStdScanners::ZucSensor
