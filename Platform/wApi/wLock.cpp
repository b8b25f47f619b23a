#include "wApi/wLock.h"

#include "wApi/wStatus.h"
#include "wApi/wTime.h"

#include <cerrno>
#include <ctime>

namespace
{

/// A number for the calling thread that no other living thread has.
uint64 ThisThread()
{
    // The address of a byte of the thread's own. Initial-exec: this library is there from the start of the process, so that
    // the address takes an addition and no call.
    [[gnu::tls_model("initial-exec")]] static thread_local uint8 const mark = 0;
    return reinterpret_cast<std::uintptr_t>(&mark);
}

/// Threads that wait for a lock with a time limit, any lock: they are rare, and one place for all of them costs the others
/// nothing but a look at the count. It lies outside of the locks, since a lock may be destroyed as soon as it is free.
struct TimedWaits
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t released = PTHREAD_COND_INITIALIZER;
    std::atomic<uint32> count{0};
};

constinit TimedWaits timedWaits;

/// Gives EBUSY when `deadlineUsec`, a moment of wTime, has passed. The thread sanitizer of GCC 12 does not know
/// pthread_mutex_clocklock, hence the condition. Not inlined, so that the uncontended path saves few registers.
[[gnu::noinline]] int LockBefore(pthread_mutex_t& mutex, uint64 deadlineUsec)
{
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(deadlineUsec / 1'000'000);
    deadline.tv_nsec = static_cast<long>(deadlineUsec % 1'000'000) * 1000;

    // Counted before the mutex is tried: an exit that does not see the count has freed the mutex before it is tried.
    timedWaits.count.fetch_add(1);
    pthread_mutex_lock(&timedWaits.mutex);
    int result = pthread_mutex_trylock(&mutex);
    for (int waited = 0; result == EBUSY && waited == 0;)
    {
        waited = pthread_cond_clockwait(&timedWaits.released, &timedWaits.mutex, CLOCK_MONOTONIC, &deadline);
        result = pthread_mutex_trylock(&mutex); // also when the time is over
    }
    pthread_mutex_unlock(&timedWaits.mutex);
    timedWaits.count.fetch_sub(1);
    return result;
}

[[gnu::noinline]] void WakeTimedWaits()
{
    pthread_mutex_lock(&timedWaits.mutex); // no thread is between its look at a lock and its wait
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
    // A plain mutex is enough: owner and depth are kept here, where a stranger's exit can be told before it harms.
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

wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec) ZU_NO_THREAD_SAFETY_ANALYSIS // it is the lock itself
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

wStatus wLock_Exit(wLock& lock) ZU_NO_THREAD_SAFETY_ANALYSIS // it is the lock itself
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
