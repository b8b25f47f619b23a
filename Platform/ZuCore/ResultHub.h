#pragma once

#include "ZuApi/Event.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <array>

namespace ZuCore
{

/// Distributes the result sets of the scan pipeline to handlers.
///
/// Synchronous handlers run on the publishing thread. Asynchronous handlers run on the hub's thread "ResultHub", which
/// starts when the first of them is added. A handler gets the `ResultSet` as a `void*`, borrowed for the call. If
/// several threads publish, they call a synchronous handler concurrently. An exception of a handler is logged, and the
/// other handlers still run.
///
/// Any thread may publish, add and remove. Removing a handler waits for a call on another thread, so it must not be
/// done under a lock that the handler takes; within a handler it does not wait. The owner must stop publishing before
/// it destroys the hub.
class ZUPLATFORM_API ResultHub
{
public:
    using Handler = Zu::Event<void*>::Handler;
    using CallbackId = Zu::Event<void*>::CallbackId;

    /// The number of sets that may wait for the asynchronous handlers; beyond it the oldest set is dropped.
    static constexpr uint64 MAX_PENDING_SETS = 1024;

    /// `syncHandlersWanted` is the value of `ShouldUseSyncHandler`: true if listeners should add synchronous handlers.
    explicit ResultHub(bool syncHandlersWanted);
    ~ResultHub(); ///< stops the thread and drops the sets that still wait

    ResultHub(ResultHub const&) = delete;
    ResultHub& operator=(ResultHub const&) = delete;

    bool ShouldUseSyncHandler() const;

    /// Adds a synchronous handler. An empty function is not stored; the returned id is then not valid.
    CallbackId AddResultHandler(Handler handler);
    void RemoveResultHandler(CallbackId const& id);

    /// As above, for asynchronous handlers.
    CallbackId AddAsyncResultHandler(Handler handler);
    void RemoveAsyncResultHandler(CallbackId const& id);

    /// Passes `set` to every handler. The hub adds the references that it needs. Does nothing for null.
    void Publish(ResultSet set);

    /// The number of sets that were dropped because too many waited for the asynchronous handlers.
    uint64 DroppedCount() const;

private:
    bool IsStarted() const;
    void StartThread();
    void Enqueue(ResultSet set);
    void RunThread();
    ResultSet WaitForSet();
    ResultSet TakeOldest() ZU_REQUIRES(queueLock);

    bool const syncWanted;
    Zu::Event<void*> syncHandlers;
    Zu::Event<void*> asyncHandlers;

    mutable Zu::Mutex queueLock; // a leaf: no other lock is taken under it
    Zu::CondVar queueChanged;
    // A ring; owns one reference to each set.
    std::array<ResultSet, MAX_PENDING_SETS> pending ZU_GUARDED_BY(queueLock){};
    uint64 firstPending ZU_GUARDED_BY(queueLock) = 0;
    uint64 pendingCount ZU_GUARDED_BY(queueLock) = 0;
    uint64 dropped ZU_GUARDED_BY(queueLock) = 0;
    bool stopping ZU_GUARDED_BY(queueLock) = false;

    mutable Zu::Mutex threadLock;
    bool started ZU_GUARDED_BY(threadLock) = false;
    wThread thread;
};

} // namespace ZuCore
