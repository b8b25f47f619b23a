#pragma once

#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "ZuStdScanners/ZucSensor/IoType.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "queryIoOutputEnabledAt". Its result is a `QueryIoOutputEnabledResult`.
struct ZUPLATFORM_API QueryIoOutputEnabledParams final : public IoIndexParams
{
    QueryIoOutputEnabledParams();
    ~QueryIoOutputEnabledParams() override;

    Zu::Params::Enum<IoType> ioType;
};

} // namespace ZuStdScanners::ZucSensor
