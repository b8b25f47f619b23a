#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetPolarity".
struct ZUPLATFORM_API DigitalOutputSetPolarityParams final : public IoIndexParams
{
    DigitalOutputSetPolarityParams();
    ~DigitalOutputSetPolarityParams() override;

    Zu::Params::Value<bool> isActiveHigh;
};

} // namespace ZuStdScanners::ZucSensor
