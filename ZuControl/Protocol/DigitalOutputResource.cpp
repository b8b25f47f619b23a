#include "ZuControl/Protocol/DigitalOutputResource.h"

namespace ZuControl::Protocol
{

DigitalOutputResource::DigitalOutputResource(IControlManager& usedManager)
    : OutputResourceBase(usedManager, "/controls/hardware/:device/digital/:port")
{
}

DigitalOutputResource::~DigitalOutputResource()
{
    EndCallbacks();
}

CommonControlProps& DigitalOutputResource::Record()
{
    return record;
}

bool DigitalOutputResource::TakeChange()
{
    Fields const present{record.enabled.Get(),         record.signalEvent.Get(), record.signalType.Get(),
                         record.scheduleEnabled.Get(), record.pulseWidth.Get(),  record.passMode.Get(),
                         record.delay.Get(),           record.delayDomain.Get(), record.inverted.Get()};
    if (present == told)
    {
        return false;
    }
    told = present;
    return true;
}

} // namespace ZuControl::Protocol
