#pragma once

#include "ZuStdScanners/ZucSensor/AnalogOutputControlType.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "analogOutSetControlType".
struct ZUPLATFORM_API AnalogOutputSetControlTypeParams final : public IoIndexParams
{
    AnalogOutputSetControlTypeParams();
    ~AnalogOutputSetControlTypeParams() override;

    Zu::Params::Enum<AnalogOutputControlType> controlType;
};

} // namespace ZuStdScanners::ZucSensor
