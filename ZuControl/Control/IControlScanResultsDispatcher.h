#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <functional>

namespace ZuControl
{

/// Takes one protocol's result sets in and hands them out in batches on a thread of its own.
class ZUCONTROL_API IControlScanResultsDispatcher
{
public:
    IControlScanResultsDispatcher() noexcept;
    virtual ~IControlScanResultsDispatcher(); // first of the slots that others call through: never move one

    /// Adds a handler, which receives the `wArrayList` of the sets that have gathered. The list is valid for the call only;
    /// who wants a set for longer takes a reference. A handler must not call this, the removal or the count on its own
    /// dispatcher, nor stop it. An empty function is not stored and gives an id that is not valid.
    virtual Zu::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) = 0;

    /// Waits for a running batch; does nothing for an id that is not valid.
    virtual void RemoveResultHandler(Zu::Event<void*>::CallbackId id) = 0;

    /// Takes a reference to `resultSet` and returns at once, whatever the handlers do.
    virtual void AddResult(void* resultSet) = 0;

    virtual uint64 ResultHandlerCount() = 0;

    /// -1000 when it runs already.
    virtual void Start() = 0;

    /// Ends the thread and drops what waits. Does nothing when it does not run.
    virtual void Stop() = 0;

    /// A number that is kept for the fan-out; it changes nothing here.
    virtual void SetClientCount(uint64 count) = 0;
    virtual uint64 GetClientCount() = 0;
};

} // namespace ZuControl
