#pragma once

#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "ZuStdScanners/ZucSensor/SerialOutputControlType.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutSetControlType".
struct ZUPLATFORM_API SerialOutputSetControlTypeParams final : public IoIndexParams
{
    SerialOutputSetControlTypeParams();
    ~SerialOutputSetControlTypeParams() override;

    Zu::Params::Enum<SerialOutputControlType> controlType;
};

} // namespace ZuStdScanners::ZucSensor
