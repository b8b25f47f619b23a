#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// Which one of a kind, and all that a command needs to know that has no other arguments.
struct ZUPLATFORM_API IoIndexParams : public Zu::Params::Group
{
    IoIndexParams();
    ~IoIndexParams() override;

    Zu::Params::Value<uint64> index; ///< counted from 0 within the kind
};

} // namespace ZuStdScanners::ZucSensor
