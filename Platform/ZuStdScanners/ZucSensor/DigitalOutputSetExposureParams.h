#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetExposure", which sets the length of a pulse.
struct ZUPLATFORM_API DigitalOutputSetExposureParams final : public IoIndexParams
{
    DigitalOutputSetExposureParams();
    ~DigitalOutputSetExposureParams() override;

    Zu::Params::Value<uint64> exposure; ///< microseconds
};

} // namespace ZuStdScanners::ZucSensor
