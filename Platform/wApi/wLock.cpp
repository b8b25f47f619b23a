#include "wApi/wLock.h"

#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <cerrno>
#include <ctime>

namespace
{

/// A number that identifies the calling thread among all living threads.
uint64 ThisThread()
{
    // The address of a thread-local byte. The initial-exec model makes taking the address an addition instead of a
    // call; it is allowed because this library is loaded when the process starts.
    [[gnu::tls_model("initial-exec")]] static thread_local uint8 const mark = 0;
    return reinterpret_cast<std::uintptr_t>(&mark);
}

/// The threads that wait for any lock with a time limit. Such waits are rare: one shared place for all of them costs
/// the other operations only one load of the count. It lies outside the locks because another thread may destroy a lock
/// as soon as the lock is free.
struct TimedWaits
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t released = PTHREAD_COND_INITIALIZER;
    std::atomic<uint32> count{0};
};

constinit TimedWaits timedWaits;

/// Returns EBUSY when `deadlineUsec`, a moment of `wTime_NowUsec`, has passed. It waits on a condition because the
/// thread sanitizer of GCC 12 does not know pthread_mutex_clocklock. Not inlined, so that the uncontended path saves
/// few registers.
[[gnu::noinline]] int LockBefore(pthread_mutex_t& mutex, uint64 deadlineUsec)
{
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(deadlineUsec / 1'000'000);
    deadline.tv_nsec = static_cast<long>(deadlineUsec % 1'000'000) * 1000;

    // The count is raised before the mutex is tried. A thread in `wLock_Exit` that still reads 0 has therefore unlocked
    // the mutex before this thread tries it.
    timedWaits.count.fetch_add(1);
    pthread_mutex_lock(&timedWaits.mutex);
    int result = pthread_mutex_trylock(&mutex);
    for (int waited = 0; result == EBUSY && waited == 0;)
    {
        waited = pthread_cond_clockwait(&timedWaits.released, &timedWaits.mutex, CLOCK_MONOTONIC, &deadline);
        result = pthread_mutex_trylock(&mutex); // also after the deadline
    }
    pthread_mutex_unlock(&timedWaits.mutex);
    timedWaits.count.fetch_sub(1);
    return result;
}

[[gnu::noinline]] void WakeTimedWaits()
{
    pthread_mutex_lock(&timedWaits.mutex); // under this mutex no thread is between its try of a lock and its wait
    pthread_cond_broadcast(&timedWaits.released);
    pthread_mutex_unlock(&timedWaits.mutex);
}

} // namespace

wLock::~wLock()
{
    if (constructed)
    {
        pthread_mutex_destroy(&mutex);
    }
}

wStatus wLock_Construct(wLock* lock, void* /*allocator*/)
{
    if (lock == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (lock->constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    // A plain mutex is enough: the lock itself keeps owner and depth, so that it refuses an exit by a thread that does
    // not hold it.
    if (pthread_mutex_init(&lock->mutex, nullptr) != 0)
    {
        return Zu::Status::FAILURE;
    }
    lock->constructed = true;
    return Zu::Status::SUCCESS;
}

wStatus wLock_Enter(wLock& lock)
{
    return wLock_EnterEx(lock, wTIMEOUT_INFINITE);
}

wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec) ZU_NO_THREAD_SAFETY_ANALYSIS // implements the lock
{
    if (!lock.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    uint64 const self = ThisThread();
    if (lock.owner.load(std::memory_order_relaxed) == self)
    {
        ++lock.depth;
        return Zu::Status::SUCCESS;
    }
    int result = 0;
    if (timeoutUsec == wTIMEOUT_INFINITE)
    {
        result = pthread_mutex_lock(&lock.mutex);
    }
    else
    {
        result = pthread_mutex_trylock(&lock.mutex);
        if (result == EBUSY && timeoutUsec != 0)
        {
            result = LockBefore(lock.mutex, wTime_AfterUsec(timeoutUsec));
        }
    }
    if (result != 0)
    {
        return result == EBUSY ? Zu::Status::TIME_OUT : Zu::Status::FAILURE;
    }
    lock.owner.store(self, std::memory_order_relaxed);
    lock.depth = 1;
    return Zu::Status::SUCCESS;
}

wStatus wLock_Exit(wLock& lock) ZU_NO_THREAD_SAFETY_ANALYSIS // implements the lock
{
    if (!lock.constructed || lock.owner.load(std::memory_order_relaxed) != ThisThread())
    {
        return Zu::Status::WRONG_STATE;
    }
    if (--lock.depth > 0)
    {
        return Zu::Status::SUCCESS;
    }
    lock.owner.store(0, std::memory_order_relaxed);
    int const result = pthread_mutex_unlock(&lock.mutex);
    // From here on another thread may destroy the lock.
    if (timedWaits.count.load() != 0)
    {
        WakeTimedWaits();
    }
    return result == 0 ? Zu::Status::SUCCESS : Zu::Status::FAILURE;
}
