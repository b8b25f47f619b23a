#include "wApi/wMutex.h"

#include <cerrno>
#include <ctime>

namespace Zu
{

// Not std::condition_variable: GCC 12's thread sanitizer does not intercept the call behind its timed wait.
CondVar::CondVar() noexcept
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

CondVar::~CondVar()
{
    pthread_cond_destroy(&condition);
}

void CondVar::NotifyOne() noexcept
{
    pthread_cond_signal(&condition);
}

void CondVar::NotifyAll() noexcept
{
    pthread_cond_broadcast(&condition);
}

bool CondVar::WaitOnce(Mutex& mutex, uint64 deadlineUsec) noexcept
{
    if (deadlineUsec == wTIMEOUT_INFINITE)
    {
        pthread_cond_wait(&condition, mutex.native.native_handle());
        return true;
    }
    timespec moment{};
    moment.tv_sec = static_cast<time_t>(deadlineUsec / 1'000'000);
    moment.tv_nsec = static_cast<long>(deadlineUsec % 1'000'000) * 1000;
    return pthread_cond_timedwait(&condition, mutex.native.native_handle(), &moment) != ETIMEDOUT;
}

} // namespace Zu
