#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetState".
struct ZUPLATFORM_API DigitalOutputSetStateParams final : public IoIndexParams
{
    DigitalOutputSetStateParams();
    ~DigitalOutputSetStateParams() override;

    Zu::Params::Value<bool> state;
};

} // namespace ZuStdScanners::ZucSensor
