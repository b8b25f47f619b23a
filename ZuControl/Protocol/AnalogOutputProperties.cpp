#include "ZuControl/Protocol/AnalogOutputProperties.h"

namespace ZuControl::Protocol
{

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

} // namespace ZuControl::Protocol
