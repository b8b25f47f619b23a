#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The number of inputs or outputs of a kind.
struct ZUPLATFORM_API QueryIoOutputCountResult final : public Zu::Params::Group
{
    QueryIoOutputCountResult();
    ~QueryIoOutputCountResult() override;

    Zu::Params::Value<uint64> count;
};

} // namespace ZuStdScanners::ZucSensor
