#include "ZuCore/ResultHub.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "wApi/wMutex.h"
#include "wApi/wObject.h"

#include <utility>

namespace ZuCore
{

namespace
{

/// `handler` with its exceptions logged. An empty function stays empty.
ResultHub::Handler Guarded(ResultHub::Handler handler)
{
    if (!handler)
    {
        return {};
    }
    return [inner = std::move(handler)](void* set) { ZU_GUARD_BOUNDARY([&] { inner(set); }); };
}

} // namespace

ResultHub::ResultHub(bool syncHandlersWanted) : syncWanted(syncHandlersWanted)
{
}

ResultHub::~ResultHub()
{
    {
        Zu::MutexLock const guard(queueLock);
        stopping = true;
    }
    queueChanged.NotifyAll();
    ZU_GUARD_DESTRUCTOR([this] {
        if (IsStarted())
        {
            ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr)); // without the lock: a handler may add another
        }
    });
    while (pendingCount > 0)
    {
        wObject_Release(TakeOldest());
    }
}

bool ResultHub::ShouldUseSyncHandler() const
{
    return syncWanted;
}

ResultHub::CallbackId ResultHub::AddResultHandler(Handler handler)
{
    return syncHandlers.Add(Guarded(std::move(handler)));
}

void ResultHub::RemoveResultHandler(CallbackId const& id)
{
    syncHandlers.Remove(id);
}

ResultHub::CallbackId ResultHub::AddAsyncResultHandler(Handler handler)
{
    StartThread();
    return asyncHandlers.Add(Guarded(std::move(handler)));
}

void ResultHub::RemoveAsyncResultHandler(CallbackId const& id)
{
    asyncHandlers.Remove(id);
}

void ResultHub::Publish(ResultSet set)
{
    if (set == nullptr)
    {
        return;
    }
    syncHandlers.Fire(set);
    if (!asyncHandlers.Empty())
    {
        Enqueue(set);
    }
}

uint64 ResultHub::DroppedCount() const
{
    Zu::MutexLock const guard(queueLock);
    return dropped;
}

bool ResultHub::IsStarted() const
{
    Zu::MutexLock const guard(threadLock);
    return started;
}

void ResultHub::StartThread()
{
    Zu::MutexLock const guard(threadLock);
    if (started)
    {
        return;
    }
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "ResultHub"));
    ZU_CHECK(wThread_Start(
        thread,
        [](void* hub) {
            static_cast<ResultHub*>(hub)->RunThread();
            return 1;
        },
        this));
    started = true;
}

void ResultHub::Enqueue(ResultSet set)
{
    wHandle<ResultSetObject> oldest;
    bool isFirstDrop = false;
    {
        Zu::MutexLock const guard(queueLock);
        if (pendingCount == MAX_PENDING_SETS)
        {
            oldest.reset(TakeOldest());
            isFirstDrop = dropped++ == 0;
        }
        pending[(firstPending + pendingCount++) % MAX_PENDING_SETS] = set;
        wObject_Share(set);
    }
    queueChanged.NotifyOne();
    if (isFirstDrop) // logged once: a line for each dropped set would cost more than the set
    {
        ZU_LOG_WARNING("Result handlers are too slow, result sets are dropped");
    }
}

void ResultHub::RunThread()
{
    while (wHandle<ResultSetObject> const set{WaitForSet()})
    {
        asyncHandlers.Fire(set.get());
    }
}

ResultSet ResultHub::WaitForSet()
{
    Zu::MutexLock const guard(queueLock);
    queueChanged.Wait(queueLock, [this]() ZU_REQUIRES(queueLock) { return stopping || pendingCount > 0; });
    return stopping ? nullptr : TakeOldest();
}

ResultSet ResultHub::TakeOldest()
{
    ResultSet const set = pending[firstPending];
    firstPending = (firstPending + 1) % MAX_PENDING_SETS;
    --pendingCount;
    return set;
}

} // namespace ZuCore
