#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "analogOutSetControlId".
struct ZUPLATFORM_API AnalogOutputSetControlIdParams final : public IoIndexParams
{
    AnalogOutputSetControlIdParams();
    ~AnalogOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

} // namespace ZuStdScanners::ZucSensor
