#include "ZuControl/Protocol/OutputResources.h"

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

SerialOutputResource::SerialOutputResource(IControlManager& usedManager)
    : OutputResourceBase(usedManager, "/controls/hardware/:device/serial/:port")
{
}

SerialOutputResource::~SerialOutputResource()
{
    EndCallbacks();
}

CommonControlProps& SerialOutputResource::Record()
{
    return record;
}

bool SerialOutputResource::TakeChange()
{
    Fields const present{record.enabled.Get(), record.rate.Get()};
    if (present == told)
    {
        return false;
    }
    told = present;
    return true;
}

MarletOutputResource::MarletOutputResource(IControlManager& usedManager)
    : OutputResourceBase(usedManager, "/controls/hardware/:device/marlet/:port")
{
}

MarletOutputResource::~MarletOutputResource()
{
    EndCallbacks();
}

CommonControlProps& MarletOutputResource::Record()
{
    return record;
}

bool MarletOutputResource::TakeChange()
{
    Fields const present{record.enabled.Get(), record.rate.Get(),    record.format.Get(),
                         record.dataMin.Get(), record.dataMax.Get(), record.delay.Get()};
    if (present == told)
    {
        return false;
    }
    told = present;
    return true;
}

} // namespace ZuControl::Protocol
