#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"

namespace ZuStdScanners::ZucSensor
{

/// The result of the command "analogOutQueryConstraint": the range of an analog output.
struct ZUPLATFORM_API AnalogOutputQueryConstraintResult final : public Zu::Params::Group
{
    AnalogOutputQueryConstraintResult();
    ~AnalogOutputQueryConstraintResult() override;

    Zu::Params::Value<double> absoluteMin; ///< milliamperes
    Zu::Params::Value<double> absoluteMax; ///< milliamperes
};

} // namespace ZuStdScanners::ZucSensor
