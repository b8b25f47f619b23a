#include "ZuControl/Protocol/AnalogOutputResource.h"

namespace ZuControl::Protocol
{

AnalogOutputResource::AnalogOutputResource(IControlManager& usedManager)
    : OutputResourceBase(usedManager, "/controls/hardware/:device/analog/:port")
{
}

AnalogOutputResource::~AnalogOutputResource()
{
    EndCallbacks();
}

CommonControlProps& AnalogOutputResource::Record()
{
    return record;
}

bool AnalogOutputResource::TakeChange()
{
    Fields const present{record.enabled.Get(),        record.signalEvent.Get(),  record.scheduleEnabled.Get(),
                         record.currentMin.Get(),     record.currentMax.Get(),   record.invalidEnabled.Get(),
                         record.currentInvalid.Get(), record.dataScaleMin.Get(), record.dataScaleMax.Get(),
                         record.delay.Get(),          record.delayDomain.Get()};
    if (present == told)
    {
        return false;
    }
    told = present;
    return true;
}

} // namespace ZuControl::Protocol
