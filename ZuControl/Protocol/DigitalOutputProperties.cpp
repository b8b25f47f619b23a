#include "ZuControl/Protocol/DigitalOutputProperties.h"

namespace ZuControl::Protocol
{

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

} // namespace ZuControl::Protocol
