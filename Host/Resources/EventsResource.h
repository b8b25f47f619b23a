#pragma once

#include "ZuApi/Signal.h"
#include "ZuRest/ResourceBase.h"
#include "ZuRest/StreamResourceBase.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

/// Streams the notifications of all resources; each report is {"type": n, "path": "..."}.
///
/// It registers one handler with each resource and passes each notification to its clients under its own lock.
class EventsResource final : public ZuRest::ResourceBase, public ZuRest::StreamResourceBase
{
public:
    EventsResource();
    ~EventsResource() override; ///< ends the handlers; the resources may be destroyed already

    EventsResource(EventsResource const&) = delete;
    EventsResource& operator=(EventsResource const&) = delete;

    /// Streams the notifications of `resource` from now on. Call it once for each resource, before its first request.
    void ListenTo(ZuRest::IResource& resource);

    ZuRest::IStreamableResource* StreamableProvider() override;
    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    void Tell(ZuRest::EventType type, std::string const& path);

    Zu::Mutex lock; // a leaf: receivers are called under it, and must only pass the report on
    uint32 nextId ZU_GUARDED_BY(lock) = 0;
    std::map<uint32, ZuRest::IStreamReceiver*> receivers ZU_GUARDED_BY(lock);

    std::vector<Zu::Subscription> subscriptions; // last: its destructor ends the calls first
};

} // namespace ZuHost
