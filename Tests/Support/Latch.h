#pragma once

#include "wApi/wMutex.h"

#include <chrono>

namespace ZuTest
{

/// Opens once; threads wait for it with a bound.
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

    /// False when it did not open in time.
    bool Wait() const
    {
        Zu::MutexLock const guard(lock);
        return changed.WaitUntil(lock, std::chrono::system_clock::now() + std::chrono::seconds(30),
                                 [this]() ZU_REQUIRES(lock) { return open; });
    }

private:
    mutable Zu::Mutex lock;
    mutable Zu::CondVar changed;
    bool open = false;
};

} // namespace ZuTest
