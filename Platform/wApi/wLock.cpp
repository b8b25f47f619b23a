#include "wApi/wLock.h"

#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <cerrno>
#include <ctime>

namespace
{

/// The threads that wait with a time limit sleep here until any lock is released.
struct TimedWaits
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t released = PTHREAD_COND_INITIALIZER;
};

constinit TimedWaits timedWaits;

} // namespace

constinit std::atomic<uint32> wLock::timedWaitCount{0};

int wLock::LockBefore(uint64 deadlineUsec) noexcept
{
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(deadlineUsec / 1'000'000);
    deadline.tv_nsec = static_cast<long>(deadlineUsec % 1'000'000) * 1000;

    // The count is raised before the mutex is tried. A thread in `wLock_Exit` that still reads 0 has therefore unlocked
    // the mutex before this thread tries it.
    timedWaitCount.fetch_add(1);
    pthread_mutex_lock(&timedWaits.mutex);
    int result = pthread_mutex_trylock(&mutex);
    for (int waited = 0; result == EBUSY && waited == 0;)
    {
        waited = pthread_cond_clockwait(&timedWaits.released, &timedWaits.mutex, CLOCK_MONOTONIC, &deadline);
        result = pthread_mutex_trylock(&mutex); // also after the deadline
    }
    pthread_mutex_unlock(&timedWaits.mutex);
    timedWaitCount.fetch_sub(1);
    return result;
}

void wLock::WakeTimedWaits() noexcept
{
    pthread_mutex_lock(&timedWaits.mutex); // under this mutex no thread is between its try of a lock and its wait
    pthread_cond_broadcast(&timedWaits.released);
    pthread_mutex_unlock(&timedWaits.mutex);
}

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

// These three implement the lock, so that the analysis cannot check them.

wStatus wLock_Enter(wLock& lock) ZU_NO_THREAD_SAFETY_ANALYSIS
{
    return lock.Enter();
}

wStatus wLock_EnterEx(wLock& lock, uint64 timeoutUsec) ZU_NO_THREAD_SAFETY_ANALYSIS
{
    pthread_t const self = pthread_self();
    if (timeoutUsec == wTIMEOUT_INFINITE || !lock.constructed || lock.owner.load(std::memory_order_relaxed) == self)
    {
        return lock.Enter(); // does not wait for a time
    }
    int result = pthread_mutex_trylock(&lock.mutex);
    if (result == EBUSY && timeoutUsec != 0)
    {
        result = lock.LockBefore(wTime_AfterUsec(timeoutUsec));
    }
    if (result != 0)
    {
        return Zu::Status::TIME_OUT;
    }
    lock.owner.store(self, std::memory_order_relaxed);
    lock.depth = 1;
    return Zu::Status::SUCCESS;
}

wStatus wLock_Exit(wLock& lock) ZU_NO_THREAD_SAFETY_ANALYSIS
{
    return lock.Exit();
}
