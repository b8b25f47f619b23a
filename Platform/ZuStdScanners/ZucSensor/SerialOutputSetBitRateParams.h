#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutSetBitRate".
struct ZUPLATFORM_API SerialOutputSetBitRateParams final : public IoIndexParams
{
    SerialOutputSetBitRateParams();
    ~SerialOutputSetBitRateParams() override;

    Zu::Params::Value<uint32> bitRate; ///< bits per second
};

} // namespace ZuStdScanners::ZucSensor
