#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuRest/ResourceBase.h"
#include "ZuRest/StreamResourceBase.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>

namespace ZuHost
{

/// What the resources notify, as a stream: {"type": n, "path": "..."} for each.
///
/// It listens to each resource once and gives the news to its clients under a lock of its own.
class EventsResource final : public ZuRest::ResourceBase, public ZuRest::StreamResourceBase
{
public:
    EventsResource();
    ~EventsResource() override; ///< hears nothing any more; the resources may be gone by now

    EventsResource(EventsResource const&) = delete;
    EventsResource& operator=(EventsResource const&) = delete;

    /// From now on clients hear of `resource`. To be called before its first request, once.
    void ListenTo(ZuRest::IResource& resource);

    ZuRest::IStreamableResource* StreamableProvider() override;
    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    void Tell(ZuRest::EventType type, std::string const& path);

    Zu::Mutex lock; // a leaf: receivers are called under it and only hand on
    uint32 nextId ZU_GUARDED_BY(lock) = 0;
    std::map<uint32, ZuRest::IStreamReceiver*> receivers ZU_GUARDED_BY(lock);

    Zu::CallbackGate gate; // last: it ends the calls first
};

} // namespace ZuHost
