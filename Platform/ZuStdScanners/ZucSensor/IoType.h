#pragma once

#include "ZuApi/Params/Enum.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// The kinds of inputs and outputs of a sensor. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API IoType : uint8
{
    ANALOG_OUTPUT = 1,
    SERIAL_OUTPUT = 2,
    DIGITAL_OUTPUT = 3,
    DIGITAL_INPUT = 4
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::IoType);
