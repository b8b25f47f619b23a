#include "Host/Sensor/ScannerInfoResult.h"

namespace ZuHost
{

ScannerInfoResult::ScannerInfoResult()
{
    Register("laserEnabled", "Laser enabled", laserEnabled);
    Register("currentEncoderValue", "Encoder", currentEncoderValue);
    Register("currentSyncTime", "Synchronisation time", currentSyncTime);
}

ScannerInfoResult::~ScannerInfoResult() = default;

} // namespace ZuHost
