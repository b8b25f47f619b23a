#pragma once

#include "ZuApi/Params/Enum.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// How a serial output sends.
/// It is exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API SerialOutputControlMode : uint8
{
    TEXT = 0,  ///< characters as they come
    BINARY = 1 ///< bytes with a length in front
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlMode);
