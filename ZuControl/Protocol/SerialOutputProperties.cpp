#include "ZuControl/Protocol/SerialOutputProperties.h"

namespace ZuControl::Protocol
{

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

} // namespace ZuControl::Protocol
