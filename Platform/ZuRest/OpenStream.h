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

/// A stream from its start to its stop.
class ZUPLATFORM_API OpenStream
{
public:
    /// Starts it. The lock excludes the starts and stops of other streams, which the resources do not do by themselves. The
    /// receiver outlives this; the match keeps the resource. Throws what the resource throws.
    OpenStream(std::shared_ptr<Zu::Mutex> sharedLock, ResourceRouter::Match streamedMatch, IStreamReceiver& receiver,
               RequestInfo const& request);
    ~OpenStream(); ///< stops it: the receiver is called no more

    OpenStream(OpenStream const&) = delete;
    OpenStream& operator=(OpenStream const&) = delete;

private:
    std::shared_ptr<Zu::Mutex> const lock; // no other is taken but what the resource takes
    ResourceRouter::Match const match;
    IStreamableResource& resource;
    uint32 id = 0;
};

} // namespace ZuRest
