#include "ZuControl/Protocol/OutputProperties.h"

namespace ZuControl::Protocol
{

CommonControlProps::CommonControlProps() : Group("")
{
}

CommonControlProps::~CommonControlProps() = default;

StandardOutput::StandardOutput() : Structure(true)
{
    Register("source", source);
    Register("outputId", outputId);
}

StandardOutput::~StandardOutput() = default;

AnalogOutputProperties::AnalogOutputProperties()
{
    Register("enabled", "Enabled", enabled);
    Register("signalEvent", "Signal Event", signalEvent);
    Register("scheduleEnabled", "Schedule Enabled", scheduleEnabled);
    Register("currentMin", "Current Min", currentMin);
    Register("currentMax", "Current Max", currentMax);
    Register("invalidEnabled", "Invalid Enabled", invalidEnabled);
    Register("currentInvalid", "Current Invalid", currentInvalid);
    Register("dataScaleMin", "Data Scale Min", dataScaleMin);
    Register("dataScaleMax", "Data Scale Max", dataScaleMax);
    Register("delay", "Delay", delay);
    Register("delayDomain", "Delay Domain", delayDomain);
}

AnalogOutputProperties::~AnalogOutputProperties() = default;

DigitalOutputProperties::DigitalOutputProperties()
{
    Register("enabled", "Enabled", enabled);
    Register("signalEvent", "Signal Event", signalEvent);
    Register("signalType", "Signal Type", signalType);
    Register("scheduleEnabled", "Schedule Enabled", scheduleEnabled);
    Register("pulseWidth", "Pulse Width", pulseWidth);
    Register("passMode", "Pass Mode", passMode);
    Register("delay", "Delay", delay);
    Register("delayDomain", "Delay Domain", delayDomain);
    Register("inverted", "Inverted", inverted);
    Register("standardOutputs", "Standard Outputs", standardOutputs);
}

DigitalOutputProperties::~DigitalOutputProperties() = default;

SerialOutputProperties::Format::Format() : Group("")
{
    Register("delimiter", "Delimiter", delimiter);
    Register("terminator", "Terminator", terminator);
    Register("invalidValue", "Invalid Value", invalidValue);
    Register("customDataFormat", "Custom Data Format", customDataFormat);
    Register("customFromatEnabled", "Custom Format Enabled", customFromatEnabled);
    Register("standardFormatMode", "Standard Format Mode", standardFormatMode);
}

SerialOutputProperties::Format::~Format() = default;

SerialOutputProperties::SerialOutputProperties()
{
    Register("enabled", "Enabled", enabled);
    Register("rate", "Rate", rate);
    Register("format", "Format", format);
    Register("standardOutputs", "Standard Outputs", standardOutputs);
}

SerialOutputProperties::~SerialOutputProperties() = default;

MarletOutputProperties::MarletOutputProperties()
{
    Register("enabled", "Enabled", enabled);
    Register("rate", "Rate", rate);
    Register("format", "Format", format);
    Register("dataMin", "Data Min", dataMin);
    Register("dataMax", "Data Max", dataMax);
    Register("delay", "Delay", delay);
}

MarletOutputProperties::~MarletOutputProperties() = default;

} // namespace ZuControl::Protocol
