#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <pthread.h>

namespace Zu
{
class Locker;
}

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
    friend class Zu::Locker; // takes and releases the lock without a call of this library
    friend ZUAPI_API wStatus wLock_Construct(wLock* lock, void* allocator);
    friend ZUAPI_API wStatus wLock_Enter(wLock& lock);
    friend ZUAPI_API wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec);
    friend ZUAPI_API wStatus wLock_Exit(wLock& lock);

    /// See `wLock_Enter`.
    wStatus Enter() noexcept
    {
        pthread_t const self = pthread_self();
        if (!constructed)
        {
            return Zu::Status::WRONG_STATE;
        }
        if (owner.load(std::memory_order_relaxed) == self)
        {
            ++depth;
            return Zu::Status::SUCCESS;
        }
        pthread_mutex_lock(&mutex); // cannot fail: a plain mutex, held by another thread at most
        owner.store(self, std::memory_order_relaxed);
        depth = 1;
        return Zu::Status::SUCCESS;
    }

    /// See `wLock_Exit`.
    wStatus Exit() noexcept
    {
        if (owner.load(std::memory_order_relaxed) != pthread_self()) // also a lock that is not constructed
        {
            return Zu::Status::WRONG_STATE;
        }
        if (--depth > 0)
        {
            return Zu::Status::SUCCESS;
        }
        owner.store(0, std::memory_order_relaxed);
        pthread_mutex_unlock(&mutex);
        // From here on another thread may destroy the lock.
        if (timedWaitCount.load() != 0)
        {
            WakeTimedWaits();
        }
        return Zu::Status::SUCCESS;
    }

    /// Waits for the mutex. Returns EBUSY when `deadlineUsec`, a moment of `wTime_NowUsec`, has passed. It waits on a
    /// condition because the thread sanitizer of GCC 12 does not know pthread_mutex_clocklock.
    int LockBefore(uint64 deadlineUsec) noexcept;
    static void WakeTimedWaits() noexcept;

    // The threads that wait for any lock with a time limit. Such waits are rare: one count for all locks costs an exit
    // only one load. It lies outside the locks because another thread may destroy a lock as soon as the lock is free.
    static std::atomic<uint32> timedWaitCount;

    pthread_mutex_t mutex{};
    // The holder, 0 when free. Relaxed access is enough: a thread only compares it with its own number.
    std::atomic<pthread_t> owner{0};
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
