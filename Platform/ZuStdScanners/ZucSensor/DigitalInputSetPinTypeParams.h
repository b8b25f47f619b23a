#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalInSetPinType", which makes the pin an input.
struct ZUPLATFORM_API DigitalInputSetPinTypeParams final : public IoIndexParams
{
    DigitalInputSetPinTypeParams();
    ~DigitalInputSetPinTypeParams() override;

    Zu::Params::Value<uint64> pin;
};

} // namespace ZuStdScanners::ZucSensor
