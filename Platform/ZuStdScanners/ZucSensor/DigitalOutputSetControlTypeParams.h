#pragma once

#include "ZuStdScanners/ZucSensor/DigitalOutputControlType.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetControlType".
struct ZUPLATFORM_API DigitalOutputSetControlTypeParams final : public IoIndexParams
{
    DigitalOutputSetControlTypeParams();
    ~DigitalOutputSetControlTypeParams() override;

    Zu::Params::Enum<DigitalOutputControlType> controlType;
};

} // namespace ZuStdScanners::ZucSensor
