#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Value.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalInEnableEvents".
struct ZUPLATFORM_API DigitalInputEnableEventsParams final : public IoIndexParams
{
    DigitalInputEnableEventsParams();
    ~DigitalInputEnableEventsParams() override;

    Zu::Params::Value<uint64> pin;
    Zu::Params::Value<bool> enable;
};

/// The arguments of the command "digitalInSetPinType", which makes the pin an input.
struct ZUPLATFORM_API DigitalInputSetPinTypeParams final : public IoIndexParams
{
    DigitalInputSetPinTypeParams();
    ~DigitalInputSetPinTypeParams() override;

    Zu::Params::Value<uint64> pin;
};

/// The source that controls a digital output. Exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API DigitalOutputControlType : uint8
{
    COMMAND = 0, ///< the commands "digitalOutSetState" and "digitalOutTrigger"
    EVENT = 1    ///< the sensor's event with the control id
};

} // namespace ZuStdScanners::ZucSensor

ZU_DECLARE_ENUM_VALUE(ZuStdScanners::ZucSensor::DigitalOutputControlType);

namespace ZuStdScanners::ZucSensor
{

/// The arguments of the command "digitalOutSetControlId".
struct ZUPLATFORM_API DigitalOutputSetControlIdParams final : public IoIndexParams
{
    DigitalOutputSetControlIdParams();
    ~DigitalOutputSetControlIdParams() override;

    Zu::Params::Value<uint32> controlId;
};

/// The arguments of the command "digitalOutSetControlType".
struct ZUPLATFORM_API DigitalOutputSetControlTypeParams final : public IoIndexParams
{
    DigitalOutputSetControlTypeParams();
    ~DigitalOutputSetControlTypeParams() override;

    Zu::Params::Enum<DigitalOutputControlType> controlType;
};

/// The arguments of the command "digitalOutSetExposure", which sets the length of a pulse.
struct ZUPLATFORM_API DigitalOutputSetExposureParams final : public IoIndexParams
{
    DigitalOutputSetExposureParams();
    ~DigitalOutputSetExposureParams() override;

    Zu::Params::Value<uint64> exposure; ///< microseconds
};

/// The arguments of the command "digitalOutSetPolarity".
struct ZUPLATFORM_API DigitalOutputSetPolarityParams final : public IoIndexParams
{
    DigitalOutputSetPolarityParams();
    ~DigitalOutputSetPolarityParams() override;

    Zu::Params::Value<bool> isActiveHigh;
};

/// The arguments of the command "digitalOutSetState".
struct ZUPLATFORM_API DigitalOutputSetStateParams final : public IoIndexParams
{
    DigitalOutputSetStateParams();
    ~DigitalOutputSetStateParams() override;

    Zu::Params::Value<bool> state;
};

} // namespace ZuStdScanners::ZucSensor
