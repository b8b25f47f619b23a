#include "ZuStdScanners/ZucSensor/SerialOutputSetBitRateParams.h"

namespace ZuStdScanners::ZucSensor
{

SerialOutputSetBitRateParams::SerialOutputSetBitRateParams()
{
    Register("bitRate", "BitRate", bitRate);
}

SerialOutputSetBitRateParams::~SerialOutputSetBitRateParams() = default;

} // namespace ZuStdScanners::ZucSensor
