#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

#include <string>

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutWrite".
struct ZUPLATFORM_API SerialOutputWriteParams final : public IoIndexParams
{
    SerialOutputWriteParams();
    ~SerialOutputWriteParams() override;

    Zu::Params::Value<uint64> size; ///< bytes of `buffer`
    Zu::Params::Value<std::string> buffer;
};

} // namespace ZuStdScanners::ZucSensor
