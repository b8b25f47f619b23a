#include "ZuRest/StreamResourceBase.h"

namespace ZuRest
{

StreamResourceBase::StreamResourceBase() = default;
StreamResourceBase::~StreamResourceBase() = default;

IStreamableResource::StartNotification& StreamResourceBase::StartEvent()
{
    return startEvent;
}

} // namespace ZuRest
