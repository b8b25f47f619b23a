#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <pthread.h>

/// A recursive lock that knows its owner.
///
/// Like every object of this library it is made in two steps: the constructor makes an empty lock, `wLock_Construct`
/// makes it usable. Any thread may call the operations. A lock must not be destroyed while a thread holds it.
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
    // The holder's thread number, 0 when free. Relaxed access is enough: a thread only compares it with its own number.
    std::atomic<uint64> owner{0};
    uint32 depth = 0; // only the holder reads or writes it
    bool constructed = false;
};

/// Makes `lock` ready for use. The allocator is ignored. Returns `Zu::Status::WRONG_STATE` if the lock is constructed
/// already and `Zu::Status::BAD_ARGUMENT` for null.
ZUAPI_API wStatus wLock_Construct(wLock* lock, void* allocator);

/// Takes the lock and waits for it without limit. The holder may take it any number of times.
ZUAPI_API wStatus wLock_Enter(wLock& lock) ZU_ACQUIRE(lock);

/// Takes the lock, or returns `Zu::Status::TIME_OUT` after `timeoutUsec` microseconds of the clock of `wTime_NowUsec`.
/// With 0 it does not wait; `wTIMEOUT_INFINITE` sets no limit. The thread-safety analysis assumes that the lock is
/// taken: the caller must test the status, as `Zu::Locker` does.
ZUAPI_API wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec) ZU_ACQUIRE(lock);

/// Releases the lock once. Returns `Zu::Status::WRONG_STATE` and changes nothing if the calling thread does not hold
/// it.
ZUAPI_API wStatus wLock_Exit(wLock& lock) ZU_RELEASE(lock);
