#include "Host/Resources/EventsResource.h"

#include "ZuApi/Guard.h"
#include "ZuRest/IStreamReceiver.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

using ZuRest::EventType;
using ZuRest::IResource;

EventsResource::EventsResource() = default;

EventsResource::~EventsResource() = default;

void EventsResource::ListenTo(IResource& resource)
{
    subscriptions.push_back(resource.NotificationEvent().Subscribe(
        [this](IResource& /*source*/, EventType type, std::string const& path) { Tell(type, path); }));
}

ZuRest::IStreamableResource* EventsResource::StreamableProvider()
{
    return this;
}

uint32 EventsResource::StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& /*request*/)
{
    Zu::MutexLock const guard(lock);
    receivers.emplace(nextId, receiver);
    return nextId++;
}

void EventsResource::StopStream(uint32 streamId)
{
    Zu::MutexLock const guard(lock);
    if (receivers.erase(streamId) == 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
}

void EventsResource::Tell(EventType type, std::string const& path)
{
    nlohmann::json const report{{"type", static_cast<uint32>(type)}, {"path", path}};
    Zu::MutexLock const guard(lock);
    for (auto const& [id, receiver] : receivers)
    {
        ZU_GUARD_BOUNDARY([&to = *receiver, &report] { to.Receive(report); }); // one failure must not end the loop
    }
}

} // namespace ZuHost
