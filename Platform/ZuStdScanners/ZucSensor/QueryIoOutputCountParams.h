#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuStdScanners/ZucSensor/IoType.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "queryIoOutputCount". Its result is a `QueryIoOutputCountResult`.
struct ZUPLATFORM_API QueryIoOutputCountParams final : public Zu::Params::Group
{
    QueryIoOutputCountParams();
    ~QueryIoOutputCountParams() override;

    Zu::Params::Enum<IoType> ioType;
};

} // namespace ZuStdScanners::ZucSensor
