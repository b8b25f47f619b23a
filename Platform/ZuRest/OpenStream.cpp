#include "ZuRest/OpenStream.h"

#include "ZuApi/Guard.h"
#include "ZuRest/IResource.h"
#include "ZuRest/IStreamableResource.h"
#include "wApi/wMutex.h"

#include <utility>

namespace ZuRest
{

OpenStream::OpenStream(std::shared_ptr<Zu::Mutex> sharedLock, ResourceRouter::Match streamedMatch,
                       IStreamReceiver& receiver, RequestInfo const& request)
    : lock(std::move(sharedLock)),
      match(std::move(streamedMatch)),
      resource(*match.resource->StreamableProvider()) // the caller has checked that it is not null
{
    Zu::MutexLock const guard(*lock);
    id = resource.StartStream(&receiver, request);
    ZU_GUARD_BOUNDARY([this] { resource.StartEvent().Fire(id); }); // an exception of a handler does not undo the start
}

OpenStream::~OpenStream()
{
    ZU_GUARD_DESTRUCTOR([this] {
        Zu::MutexLock const guard(*lock);
        resource.StopStream(id);
    });
}

} // namespace ZuRest
