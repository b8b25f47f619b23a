#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// The source that controls an analog output. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API AnalogOutputControlType : uint8
{
    COMMAND = 0, ///< the command "analogOutEnqueueOutput"
    EVENT = 1    ///< the sensor's event with the control id
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::AnalogOutputControlType);

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "analogOutEnqueueOutput".
struct ZUPLATFORM_API AnalogOutputEnqueueOutputParams final : public IoIndexParams
{
    AnalogOutputEnqueueOutputParams();
    ~AnalogOutputEnqueueOutputParams() override;

    Zu::Params::Value<double> current; ///< milliamperes
};

/// The result of the command "analogOutQueryConstraint": the range of an analog output.
struct ZUPLATFORM_API AnalogOutputQueryConstraintResult final : public Zu::Params::Group
{
    AnalogOutputQueryConstraintResult();
    ~AnalogOutputQueryConstraintResult() override;

    Zu::Params::Value<double> absoluteMin; ///< milliamperes
    Zu::Params::Value<double> absoluteMax; ///< milliamperes
};

/// The arguments of the command "analogOutSetControlId".
struct ZUPLATFORM_API AnalogOutputSetControlIdParams final : public IoIndexParams
{
    AnalogOutputSetControlIdParams();
    ~AnalogOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

/// The arguments of the command "analogOutSetControlType".
struct ZUPLATFORM_API AnalogOutputSetControlTypeParams final : public IoIndexParams
{
    AnalogOutputSetControlTypeParams();
    ~AnalogOutputSetControlTypeParams() override;

    Zu::Params::Enum<AnalogOutputControlType> controlType;
};

} // namespace ZuStdScanners::ZucSensor
