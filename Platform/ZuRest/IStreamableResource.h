#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuRest
{

class IStreamReceiver;
struct RequestInfo;

/// The face of a resource that reports by itself. Starts and stops of all streams come one at a time.
class ZUPLATFORM_API IStreamableResource
{
public:
    using StartNotification = Zu::Event<uint32>;

    /// From now on `receiver` gets the reports, until the stream is stopped. It is not owned. Gives the id of the stream.
    virtual uint32 StartStream(IStreamReceiver* receiver, RequestInfo const& request) = 0; // the first slot: never move

    /// Ends a stream: when this returns its receiver is called no more. Throws -997 for an id that names none.
    virtual void StopStream(uint32 streamId) = 0;

    /// Fires with the id of a stream that has been started, on the thread that asked for it.
    virtual StartNotification& StartEvent() = 0;

    virtual ~IStreamableResource(); // behind the others, which keep their places
};

} // namespace ZuRest
