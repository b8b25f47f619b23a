#pragma once

#include "ZuRest/ResourceRouter.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>

namespace ZuRest
{

class IStreamReceiver;
class IStreamableResource;
struct RequestInfo;

/// An open stream: the constructor starts it, the destructor stops it.
class ZUPLATFORM_API OpenStream
{
public:
    /// Starts the stream. `sharedLock` serialises the starts and stops of all streams, which the resources do not do
    /// themselves. The receiver must outlive this object. The match keeps the resource alive. Exceptions of the
    /// resource go to the caller.
    OpenStream(std::shared_ptr<Zu::Mutex> sharedLock, ResourceRouter::Match streamedMatch, IStreamReceiver& receiver,
               RequestInfo const& request);
    ~OpenStream(); ///< stops the stream; the receiver is not called any more

    OpenStream(OpenStream const&) = delete;
    OpenStream& operator=(OpenStream const&) = delete;

private:
    // Held while the resource starts or stops the stream, and while the handlers of `StartEvent` run.
    std::shared_ptr<Zu::Mutex> const lock;
    ResourceRouter::Match const match;
    IStreamableResource& resource;
    uint32 id = 0;
};

} // namespace ZuRest
