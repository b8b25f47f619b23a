#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutSetControlId".
struct ZUPLATFORM_API SerialOutputSetControlIdParams final : public IoIndexParams
{
    SerialOutputSetControlIdParams();
    ~SerialOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

} // namespace ZuStdScanners::ZucSensor
