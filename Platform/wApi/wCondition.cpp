#include "wApi/wCondition.h"

#include <cerrno>
#include <ctime>

// Not std::condition_variable: its timed wait goes through a call that sanitizers of older compilers do not know.

wCondition::wCondition() noexcept
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

wCondition::~wCondition()
{
    pthread_cond_destroy(&condition);
}

void wCondition::NotifyOne() noexcept
{
    pthread_cond_signal(&condition);
}

void wCondition::NotifyAll() noexcept
{
    pthread_cond_broadcast(&condition);
}

bool wCondition::WaitOnce(std::mutex& mutex, uint64 deadlineUsec) noexcept
{
    if (deadlineUsec == wTIMEOUT_INFINITE)
    {
        pthread_cond_wait(&condition, mutex.native_handle());
        return true;
    }
    timespec moment{};
    moment.tv_sec = static_cast<time_t>(deadlineUsec / 1'000'000);
    moment.tv_nsec = static_cast<long>(deadlineUsec % 1'000'000) * 1000;
    return pthread_cond_timedwait(&condition, mutex.native_handle(), &moment) != ETIMEDOUT;
}
