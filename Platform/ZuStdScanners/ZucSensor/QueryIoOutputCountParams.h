#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuStdScanners/ZucSensor/IoType.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// For the command "queryIoOutputCount", which gives a `QueryIoOutputCountResult`.
struct ZUPLATFORM_API QueryIoOutputCountParams final : public Zu::Params::Group
{
    QueryIoOutputCountParams();
    ~QueryIoOutputCountParams() override;

    Zu::Params::Enum<IoType> ioType;
};

} // namespace ZuStdScanners::ZucSensor
