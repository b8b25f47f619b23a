#pragma once

#include "ZuApi/Params/Enum.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// The source that controls a digital output. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API DigitalOutputControlType : uint8
{
    COMMAND = 0, ///< the commands "digitalOutSetState" and "digitalOutTrigger"
    EVENT = 1    ///< the sensor's event with the control id
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::DigitalOutputControlType);
