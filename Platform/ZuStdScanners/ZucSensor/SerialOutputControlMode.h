#pragma once

#include "ZuApi/Params/Enum.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// The format in which a serial output sends. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API SerialOutputControlMode : uint8
{
    TEXT = 0,  ///< characters, unchanged
    BINARY = 1 ///< bytes, preceded by their length
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlMode);
