#include "ZuControl/Protocol/MarletOutputResource.h"

namespace ZuControl::Protocol
{

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
