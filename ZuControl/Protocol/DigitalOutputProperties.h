#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Protocol/CommonControlProps.h"
#include "ZuControl/Protocol/StandardOutput.h"

namespace ZuControl::Protocol
{

/// How a digital output is to be driven. The sensor defines the meaning of the integers; this record only stores them.
struct ZUCONTROL_INTERNAL_API DigitalOutputProperties final : public CommonControlProps
{
    DigitalOutputProperties();
    ~DigitalOutputProperties() override;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Value<int32> signalEvent;
    Zu::Params::Value<int32> signalType;
    Zu::Params::Value<bool> scheduleEnabled;
    Zu::Params::Value<uint32> pulseWidth;
    Zu::Params::Value<int32> passMode;
    Zu::Params::Value<double> delay;
    Zu::Params::Value<int32> delayDomain;
    Zu::Params::Value<bool> inverted;
    Zu::Params::Array<StandardOutput> standardOutputs;
};

} // namespace ZuControl::Protocol
