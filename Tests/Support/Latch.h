#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuTest
{

/// Opens once. Threads wait for it with a bound.
class Latch
{
public:
    void Open()
    {
        {
            Zu::MutexLock const guard(lock);
            open = true;
        }
        changed.NotifyAll();
    }

    /// Returns false if the latch did not open in time.
    bool Wait() const
    {
        Zu::MutexLock const guard(lock);
        return changed.WaitUntil(lock, wTime_AfterUsec(PATIENCE_USEC), [this]() ZU_REQUIRES(lock) { return open; });
    }

private:
    static constexpr uint64 PATIENCE_USEC = 30'000'000;

    mutable Zu::Mutex lock;
    mutable Zu::CondVar changed;
    bool open ZU_GUARDED_BY(lock) = false;
};

} // namespace ZuTest
