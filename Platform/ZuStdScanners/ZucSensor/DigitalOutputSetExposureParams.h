#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// For the command "digitalOutSetExposure": how long a pulse lasts.
struct ZUPLATFORM_API DigitalOutputSetExposureParams final : public IoIndexParams
{
    DigitalOutputSetExposureParams();
    ~DigitalOutputSetExposureParams() override;

    Zu::Params::Value<uint64> exposure; ///< microseconds
};

} // namespace ZuStdScanners::ZucSensor
