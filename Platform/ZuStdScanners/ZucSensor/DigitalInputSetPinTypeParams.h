#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// For the command "digitalInSetPinType": the pin becomes an input.
struct ZUPLATFORM_API DigitalInputSetPinTypeParams final : public IoIndexParams
{
    DigitalInputSetPinTypeParams();
    ~DigitalInputSetPinTypeParams() override;

    Zu::Params::Value<uint64> pin;
};

} // namespace ZuStdScanners::ZucSensor
