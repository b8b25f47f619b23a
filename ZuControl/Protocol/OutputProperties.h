#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::Protocol
{

/// The base of the configuration records of all outputs.
struct ZUCONTROL_INTERNAL_API CommonControlProps : public Zu::Params::Group
{
    CommonControlProps();
    ~CommonControlProps() override;
};

/// A data source that an output sends, and its output id.
struct ZUCONTROL_INTERNAL_API StandardOutput final : public Zu::Properties::Structure
{
    StandardOutput();
    ~StandardOutput() override;

    Zu::Properties::Value<std::string> source;
    Zu::Properties::Value<uint32> outputId;
};

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

/// How a serial output is to be driven, and how it writes.
struct ZUCONTROL_INTERNAL_API SerialOutputProperties final : public CommonControlProps
{
    /// How the values are written.
    struct ZUCONTROL_INTERNAL_API Format final : public Zu::Params::Group
    {
        Format();
        ~Format() override;

        Zu::Params::Value<std::string> delimiter;
        Zu::Params::Value<std::string> terminator;
        Zu::Params::Value<std::string> invalidValue;
        Zu::Params::Value<std::string> customDataFormat;
        Zu::Params::Value<bool> customFromatEnabled; ///< clients rely on the misspelt key
        Zu::Params::Value<int32> standardFormatMode;
    };

    SerialOutputProperties();
    ~SerialOutputProperties() override;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Value<uint32> rate;
    Format format;
    Zu::Params::Array<StandardOutput> standardOutputs;
};

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
