#include "ZuControl/Protocol/SerialOutputResource.h"

namespace ZuControl::Protocol
{

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

} // namespace ZuControl::Protocol
