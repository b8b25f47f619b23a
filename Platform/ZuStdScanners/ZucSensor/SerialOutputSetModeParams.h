#pragma once

#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "ZuStdScanners/ZucSensor/SerialOutputControlMode.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutSetMode".
struct ZUPLATFORM_API SerialOutputSetModeParams final : public IoIndexParams
{
    SerialOutputSetModeParams();
    ~SerialOutputSetModeParams() override;

    Zu::Params::Enum<SerialOutputControlMode> controlMode;
};

} // namespace ZuStdScanners::ZucSensor
