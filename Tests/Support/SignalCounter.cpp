#include "Support/SignalCounter.h"

#include "wApi/wTime.h"

namespace ZuTest
{

SignalCounter::SignalCounter() = default;
SignalCounter::~SignalCounter() = default;

void SignalCounter::Signal()
{
    std::scoped_lock const guard(lock); // also over the call below: whoever waits may end the latch at once
    ++count;
    changed.NotifyAll();
}

bool SignalCounter::Wait(uint64 times)
{
    constexpr uint64 PATIENCE_USEC = 30'000'000;
    std::unique_lock guard(lock);
    return changed.WaitUntil(guard, wTime_AfterUsec(PATIENCE_USEC), [this, times] { return count >= times; });
}

uint64 SignalCounter::Count() const
{
    std::scoped_lock const guard(lock);
    return count;
}

} // namespace ZuTest
