#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The index of an input or output within its kind; the complete arguments of a command without others.
struct ZUPLATFORM_API IoIndexParams : public Zu::Params::Group
{
    IoIndexParams();
    ~IoIndexParams() override;

    Zu::Params::Value<uint64> index; ///< from 0, within the kind
};

} // namespace ZuStdScanners::ZucSensor
