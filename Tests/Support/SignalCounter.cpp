#include "Support/SignalCounter.h"

#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuTest
{

SignalCounter::SignalCounter() = default;
SignalCounter::~SignalCounter() = default;

void SignalCounter::Signal()
{
    Zu::MutexLock const guard(lock); // held during NotifyAll: a woken thread may destroy the counter at once
    ++count;
    changed.NotifyAll();
}

bool SignalCounter::Wait(uint64 times)
{
    constexpr uint64 PATIENCE_USEC = 30'000'000;
    Zu::MutexLock const guard(lock);
    return changed.WaitUntil(lock, wTime_AfterUsec(PATIENCE_USEC),
                             [this, times]() ZU_REQUIRES(lock) { return count >= times; });
}

uint64 SignalCounter::Count() const
{
    Zu::MutexLock const guard(lock);
    return count;
}

} // namespace ZuTest
