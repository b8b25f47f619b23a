#pragma once

#include "wApi/wExport.h"
#include "wApi/wThreadSafety.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <pthread.h>

/// A recursive lock that knows its owner.
///
/// It is made in two steps, as every object of this library: an empty one first, then `wLock_Construct`. Its destructor
/// releases what was made. Any thread may call the operations; a lock must not be destroyed while it is held.
class ZUAPI_API ZU_CAPABILITY("lock") wLock
{
public:
    wLock() noexcept = default;
    ~wLock();

    wLock(wLock const&) = delete;
    wLock& operator=(wLock const&) = delete;

private:
    friend ZUAPI_API wStatus wLock_Construct(wLock* lock, void* allocator);
    friend ZUAPI_API wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec);
    friend ZUAPI_API wStatus wLock_Exit(wLock& lock);

    pthread_mutex_t mutex{};
    std::atomic<uint64> owner{0}; // the number of the thread that holds it, 0 when free; only that thread's own matters
    uint32 depth = 0;             // touched by the owner alone
    bool constructed = false;
};

/// Makes `lock` ready for use. The allocator is passed through; null is the default one. -1000 for one that is made already.
ZUAPI_API wStatus wLock_Construct(wLock* lock, void* allocator);

/// Takes the lock, waiting without limit; one thread may take it any number of times.
ZUAPI_API wStatus wLock_Enter(wLock& lock) ZU_ACQUIRE(lock);

/// Takes the lock, or gives `Zu::Status::TIME_OUT` when `timeoutUsec` microseconds of the clock of wTime have passed; 0 does
/// not wait, all ones has no limit. The thread-safety analysis assumes that the lock is taken: the caller tests the status
/// (Zu::Locker does).
ZUAPI_API wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec) ZU_ACQUIRE(lock);

/// Gives the lock back once. -1000, and nothing changes, for a thread that does not hold it.
ZUAPI_API wStatus wLock_Exit(wLock& lock) ZU_RELEASE(lock);
