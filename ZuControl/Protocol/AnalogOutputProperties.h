#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/Protocol/CommonControlProps.h"

namespace ZuControl::Protocol
{

/// How an analog output is to be driven. The sensor defines the meaning of the integers; this record only stores them.
struct ZUCONTROL_INTERNAL_API AnalogOutputProperties final : public CommonControlProps
{
    AnalogOutputProperties();
    ~AnalogOutputProperties() override;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Value<int32> signalEvent;
    Zu::Params::Value<bool> scheduleEnabled;
    Zu::Params::Value<double> currentMin;
    Zu::Params::Value<double> currentMax;
    Zu::Params::Value<bool> invalidEnabled;
    Zu::Params::Value<double> currentInvalid;
    Zu::Params::Value<double> dataScaleMin;
    Zu::Params::Value<double> dataScaleMax;
    Zu::Params::Value<double> delay;
    Zu::Params::Value<int32> delayDomain;
};

} // namespace ZuControl::Protocol
