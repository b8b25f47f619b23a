#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuRest
{

class IStreamReceiver;
struct RequestInfo;

/// The interface of a resource that sends reports by itself. Starts and stops of all streams are serialised.
class ZUPLATFORM_API IStreamableResource
{
public:
    // Slot order is part of the plug-in interface.
    using StartNotification = Zu::Event<uint32>;

    /// Starts a stream and returns its id. `receiver` gets the reports until the stream is stopped. The resource does
    /// not own it.
    virtual uint32 StartStream(IStreamReceiver* receiver, RequestInfo const& request) = 0;

    /// Stops a stream. After the return its receiver is not called any more. Throws `Zu::Status::BAD_ARGUMENT` for an
    /// unknown id.
    virtual void StopStream(uint32 streamId) = 0;

    /// Fires with the id of a new stream, on the thread that started it.
    virtual StartNotification& StartEvent() = 0;

    virtual ~IStreamableResource(); // after the other slots, which keep their places
};

} // namespace ZuRest
