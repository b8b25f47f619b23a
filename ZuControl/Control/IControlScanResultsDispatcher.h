#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Control/LastDelivery.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>

namespace ZuControl
{

/// Counters and state of the dispatcher of one protocol. They outlive the dispatchers, which exist while there are
/// handlers. The dispatcher's thread and the threads that start and stop it write them, any thread reads them: relaxed,
/// since the numbers do not depend on each other.
struct DispatchCounters
{
    std::atomic<uint64> batches{0}; ///< handed to the handlers
    std::atomic<uint64> resultSets{0};
    std::atomic<uint64> ageUsec{0}; ///< sum over all batches of the time from the first set to the hand-over

    std::atomic<uint64> busySinceUsec{0}; ///< when the running batch was handed to the handlers; 0: none is running
    std::atomic<bool> hasDied{false};     ///< an exception has ended the thread, and `Stop` has not been called since

    LastDelivery lastDelivery; ///< the newest set of the last batch
};

/// Takes in the result sets of one protocol and hands them to its handlers in batches, on a thread of its own.
///
/// Protocols reach it through IControlScanResults. Any thread may call.
class ZUCONTROL_API IControlScanResultsDispatcher
{
public:
    IControlScanResultsDispatcher() noexcept;
    virtual ~IControlScanResultsDispatcher(); // first of the slots that others call through: never move one

    /// Adds a handler, which receives the `wArrayList` of the sets that have gathered. The list is valid for the call
    /// only; a handler takes a reference to a set to keep it. Waits for a running batch: a handler must not call this,
    /// `RemoveResultHandler`, `ResultHandlerCount` or `Stop` on its own dispatcher. When a handler throws, the
    /// exception is logged and the thread ends: nothing is delivered until `Stop` and `Start`. An empty function is not
    /// stored and gives an id that is not valid.
    virtual Zu::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) = 0;

    /// Waits for a running batch; does nothing for an id that is not valid.
    virtual void RemoveResultHandler(Zu::Event<void*>::CallbackId id) = 0;

    /// Takes a reference to `resultSet` and returns without waiting for the handlers. Throws the platform's status when
    /// the list cannot grow.
    virtual void AddResult(void* resultSet) = 0;

    /// Waits for a running batch.
    virtual uint64 ResultHandlerCount() = 0;

    /// Starts the thread. Throws `Zu::Status::WRONG_STATE` when the dispatcher runs already, also when its thread has
    /// died.
    virtual void Start() = 0;

    /// Waits for a running batch, ends the thread and drops the sets that wait. Does nothing when the dispatcher does
    /// not run. `Start` and `Stop` must not run beside each other.
    virtual void Stop() = 0;

    /// Stores the number of clients for the fan-out; the dispatcher itself does not use it. Neither this nor its reader
    /// blocks.
    virtual void SetClientCount(uint64 count) = 0;
    virtual uint64 GetClientCount() = 0;
};

} // namespace ZuControl
