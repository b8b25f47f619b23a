#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
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

namespace ZuStdScanners::ZucSensor
{

/// The index of an input or output within its kind; the complete arguments of a command without others.
struct ZUPLATFORM_API IoIndexParams : public Zu::Params::Group
{
    IoIndexParams();
    ~IoIndexParams() override;

    Zu::Params::Value<uint64> index; ///< from 0, within the kind
};

/// The arguments of the command "enableIoOutputAt", which switches an input or output on or off.
struct ZUPLATFORM_API EnableIoOutputAtParams final : public IoIndexParams
{
    EnableIoOutputAtParams();
    ~EnableIoOutputAtParams() override;

    Zu::Params::Enum<IoType> ioType;
    Zu::Params::Value<bool> enable;
};

/// The arguments of the command "queryIoOutputCount". Its result is a `QueryIoOutputCountResult`.
struct ZUPLATFORM_API QueryIoOutputCountParams final : public Zu::Params::Group
{
    QueryIoOutputCountParams();
    ~QueryIoOutputCountParams() override;

    Zu::Params::Enum<IoType> ioType;
};

/// The number of inputs or outputs of a kind.
struct ZUPLATFORM_API QueryIoOutputCountResult final : public Zu::Params::Group
{
    QueryIoOutputCountResult();
    ~QueryIoOutputCountResult() override;

    Zu::Params::Value<uint64> count;
};

/// The arguments of the command "queryIoOutputEnabledAt". Its result is a `QueryIoOutputEnabledResult`.
struct ZUPLATFORM_API QueryIoOutputEnabledParams final : public IoIndexParams
{
    QueryIoOutputEnabledParams();
    ~QueryIoOutputEnabledParams() override;

    Zu::Params::Enum<IoType> ioType;
};

/// Whether an input or output is on.
struct ZUPLATFORM_API QueryIoOutputEnabledResult final : public Zu::Params::Group
{
    QueryIoOutputEnabledResult();
    ~QueryIoOutputEnabledResult() override;

    Zu::Params::Value<bool> enabled;
};

} // namespace ZuStdScanners::ZucSensor
