#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

namespace ZuHost
{

/// What the action "scannerInfo" gives.
class ScannerInfoResult final : public Zu::Params::Group
{
public:
    ScannerInfoResult();
    ~ScannerInfoResult() override;

    Zu::Params::Value<bool> laserEnabled;
    Zu::Params::Value<uint64> currentEncoderValue; ///< ticks; the conveyor only moves on, so there is none below 0
    Zu::Params::Value<uint64> currentSyncTime;     ///< a thousand and twenty-fourths of a millisecond
};

} // namespace ZuHost
