#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

namespace ZuHost
{

/// The result of the action "scannerInfo".
class ScannerInfoResult final : public Zu::Params::Group
{
public:
    ScannerInfoResult();
    ~ScannerInfoResult() override;

    Zu::Params::Value<bool> laserEnabled;
    Zu::Params::Value<uint64> currentEncoderValue; ///< ticks; never negative, because the conveyor only moves forward
    Zu::Params::Value<uint64> currentSyncTime;     ///< in 1/1024 of a millisecond
};

} // namespace ZuHost
