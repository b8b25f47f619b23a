#pragma once

#include "ZuCore/ResultHandlers.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <array>

namespace ZuCore
{

/// Where the scan pipeline publishes its result sets and others listen.
///
/// Synchronous handlers run on the publishing thread, asynchronous ones on "ResultHub", a thread of the hub that starts with
/// the first of them; a handler gets the `ResultSet` as a `void*`, borrowed for the call. What a handler throws is logged and
/// keeps nothing from the others.
/// Any thread may publish, add and remove. A removal waits for a call that runs on another thread, so it must not be made
/// under a lock that the handler takes; from within a handler it does not wait. The owner ends publishing before the hub goes.
class ZUPLATFORM_API ResultHub
{
public:
    using Handler = ResultHandlers::Handler;
    using CallbackId = ResultHandlers::CallbackId;

    /// How many sets may wait for the asynchronous handlers; beyond it the oldest are dropped.
    static constexpr uint64 MAX_PENDING_SETS = 1024;

    /// `syncHandlersWanted`: which of the two registrations this hub wants its listeners to use.
    explicit ResultHub(bool syncHandlersWanted);
    ~ResultHub(); ///< ends the thread; sets that still wait are dropped

    ResultHub(ResultHub const&) = delete;
    ResultHub& operator=(ResultHub const&) = delete;

    bool ShouldUseSyncHandler() const;

    /// An empty function is not stored and gives an id that is not valid.
    CallbackId AddResultHandler(Handler handler);
    void RemoveResultHandler(CallbackId const& id);

    /// As above, on the hub's thread.
    CallbackId AddAsyncResultHandler(Handler handler);
    void RemoveAsyncResultHandler(CallbackId const& id);

    /// Hands `set` to every handler. The hub takes references of its own where it needs them. Null is ignored.
    void Publish(ResultSet set);

    /// Sets that the asynchronous handlers never saw because too many waited.
    uint64 DroppedCount() const;

private:
    void StartThread();
    void Enqueue(ResultSet set);
    void RunThread();
    ResultSet WaitForSet();
    ResultSet TakeOldest() ZU_REQUIRES(queueLock);

    bool const syncWanted;
    ResultHandlers syncHandlers;
    ResultHandlers asyncHandlers;

    mutable Zu::Mutex queueLock; // a leaf
    Zu::CondVar queueChanged;
    std::array<ResultSet, MAX_PENDING_SETS> pending ZU_GUARDED_BY(queueLock){}; // a ring; one reference each
    uint64 firstPending ZU_GUARDED_BY(queueLock) = 0;
    uint64 pendingCount ZU_GUARDED_BY(queueLock) = 0;
    uint64 dropped ZU_GUARDED_BY(queueLock) = 0;
    bool stopping ZU_GUARDED_BY(queueLock) = false;

    Zu::Mutex threadLock;
    bool started ZU_GUARDED_BY(threadLock) = false;
    wThread thread;
};

} // namespace ZuCore
