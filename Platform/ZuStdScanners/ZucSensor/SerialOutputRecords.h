#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <string>

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

namespace ZuStdScanners::ZucSensor
{

/// The source that controls a serial output. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API SerialOutputControlType : uint8
{
    COMMAND = 0, ///< the command "serialOutWrite"
    EVENT = 1    ///< the sensor's event with the control id
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlType);

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "serialOutSetBitRate".
struct ZUPLATFORM_API SerialOutputSetBitRateParams final : public IoIndexParams
{
    SerialOutputSetBitRateParams();
    ~SerialOutputSetBitRateParams() override;

    Zu::Params::Value<uint32> bitRate; ///< bits per second
};

/// The arguments of the command "serialOutSetControlId".
struct ZUPLATFORM_API SerialOutputSetControlIdParams final : public IoIndexParams
{
    SerialOutputSetControlIdParams();
    ~SerialOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

/// The arguments of the command "serialOutSetControlType".
struct ZUPLATFORM_API SerialOutputSetControlTypeParams final : public IoIndexParams
{
    SerialOutputSetControlTypeParams();
    ~SerialOutputSetControlTypeParams() override;

    Zu::Params::Enum<SerialOutputControlType> controlType;
};

/// The arguments of the command "serialOutSetMode".
struct ZUPLATFORM_API SerialOutputSetModeParams final : public IoIndexParams
{
    SerialOutputSetModeParams();
    ~SerialOutputSetModeParams() override;

    Zu::Params::Enum<SerialOutputControlMode> controlMode;
};

/// The arguments of the command "serialOutWrite".
struct ZUPLATFORM_API SerialOutputWriteParams final : public IoIndexParams
{
    SerialOutputWriteParams();
    ~SerialOutputWriteParams() override;

    Zu::Params::Value<uint64> size; ///< bytes of `buffer`
    Zu::Params::Value<std::string> buffer;
};

} // namespace ZuStdScanners::ZucSensor
