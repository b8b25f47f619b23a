#include "wApi/wLock.h"

#include "wApi/wStatus.h"

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

timespec Deadline(uint64 timeoutUsec)
{
    constexpr uint64 USEC_PER_SEC = 1'000'000;
    constexpr uint64 LONGEST_SEC = 1'000'000'000; // some thirty years; keeps the sum within time_t
    timespec moment{};
    clock_gettime(CLOCK_REALTIME, &moment);
    uint64 const seconds = timeoutUsec / USEC_PER_SEC;
    moment.tv_sec += static_cast<time_t>(seconds < LONGEST_SEC ? seconds : LONGEST_SEC);
    moment.tv_nsec += static_cast<long>(timeoutUsec % USEC_PER_SEC) * 1000;
    if (moment.tv_nsec >= 1'000'000'000)
    {
        moment.tv_nsec -= 1'000'000'000;
        moment.tv_sec += 1;
    }
    return moment;
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
    else if (timeoutUsec == 0)
    {
        result = pthread_mutex_trylock(&lock.mutex);
    }
    else
    {
        timespec const deadline = Deadline(timeoutUsec);
        result = pthread_mutex_timedlock(&lock.mutex, &deadline);
    }
    if (result != 0)
    {
        return result == ETIMEDOUT || result == EBUSY ? Zu::Status::TIME_OUT : Zu::Status::FAILURE;
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
    return pthread_mutex_unlock(&lock.mutex) == 0 ? Zu::Status::SUCCESS : Zu::Status::FAILURE;
}
