#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/Protocol/CommonControlProps.h"

namespace ZuControl::Protocol
{

/// How the serial output over the link to the sensor is to be driven.
struct ZUCONTROL_INTERNAL_API MarletOutputProperties final : public CommonControlProps
{
    MarletOutputProperties();
    ~MarletOutputProperties() override;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Value<uint32> rate;
    Zu::Params::Value<int32> format;
    Zu::Params::Value<double> dataMin;
    Zu::Params::Value<double> dataMax;
    Zu::Params::Value<double> delay;
};

} // namespace ZuControl::Protocol
