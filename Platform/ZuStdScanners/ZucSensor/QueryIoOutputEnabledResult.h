#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// Whether an input or output is on.
struct ZUPLATFORM_API QueryIoOutputEnabledResult final : public Zu::Params::Group
{
    QueryIoOutputEnabledResult();
    ~QueryIoOutputEnabledResult() override;

    Zu::Params::Value<bool> enabled;
};

} // namespace ZuStdScanners::ZucSensor
