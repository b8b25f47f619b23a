#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetControlId".
struct ZUPLATFORM_API DigitalOutputSetControlIdParams final : public IoIndexParams
{
    DigitalOutputSetControlIdParams();
    ~DigitalOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

} // namespace ZuStdScanners::ZucSensor
