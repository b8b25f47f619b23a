#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoIndexParams.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "analogOutEnqueueOutput".
struct ZUPLATFORM_API AnalogOutputEnqueueOutputParams final : public IoIndexParams
{
    AnalogOutputEnqueueOutputParams();
    ~AnalogOutputEnqueueOutputParams() override;

    Zu::Params::Value<double> current; ///< milliamperes
};

} // namespace ZuStdScanners::ZucSensor
