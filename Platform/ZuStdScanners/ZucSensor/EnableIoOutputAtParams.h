#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "ZuStdScanners/ZucSensor/IoType.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "enableIoOutputAt", which switches an input or output on or off.
struct ZUPLATFORM_API EnableIoOutputAtParams final : public IoIndexParams
{
    EnableIoOutputAtParams();
    ~EnableIoOutputAtParams() override;

    Zu::Params::Enum<IoType> ioType;
    Zu::Params::Value<bool> enable;
};

} // namespace ZuStdScanners::ZucSensor
