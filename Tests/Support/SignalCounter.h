#pragma once

#include "wApi/wMutex.h"

namespace ZuTest
{

/// Where threads of a test meet: counts what has happened, and waits for it with a bound.
class SignalCounter
{
public:
    SignalCounter();
    ~SignalCounter();

    SignalCounter(SignalCounter const&) = delete;
    SignalCounter& operator=(SignalCounter const&) = delete;

    void Signal();

    /// Waits until it was signalled `times` times in all; false when that has not come within half a minute.
    [[nodiscard]] bool Wait(uint64 times = 1);

    uint64 Count() const;

private:
    mutable Zu::Mutex lock;
    Zu::CondVar changed;
    uint64 count ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuTest
