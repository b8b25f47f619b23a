#pragma once

#include "wApi/wMutex.h"

namespace ZuTest
{

/// Counts signals and waits for them with a bound, so that the threads of a test can meet.
class SignalCounter
{
public:
    SignalCounter();
    ~SignalCounter();

    SignalCounter(SignalCounter const&) = delete;
    SignalCounter& operator=(SignalCounter const&) = delete;

    void Signal();

    /// Waits until `times` signals were given in all. Returns false after half a minute without them.
    [[nodiscard]] bool Wait(uint64 times = 1);

    uint64 Count() const;

private:
    mutable Zu::Mutex lock;
    Zu::CondVar changed;
    uint64 count ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuTest
