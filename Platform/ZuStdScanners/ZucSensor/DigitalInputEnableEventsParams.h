#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalInEnableEvents".
struct ZUPLATFORM_API DigitalInputEnableEventsParams final : public IoIndexParams
{
    DigitalInputEnableEventsParams();
    ~DigitalInputEnableEventsParams() override;

    Zu::Params::Value<uint64> pin;
    Zu::Params::Value<bool> enable;
};

} // namespace ZuStdScanners::ZucSensor
