#pragma once

#include "wApi/wExport.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"

namespace Zu
{

/// Holds a lock until the end of the scope, on the thread that made the guard.
class ZUAPI_API ZU_SCOPED_CAPABILITY Locker
{
public:
    /// Waits up to `timeoutUsec` microseconds for the lock, by default without limit. Throws the failing status without
    /// a text, `Zu::Status::TIME_OUT` after the time limit.
    // The analysis cannot see that a failing status means an untaken lock. This guard throws then, so that code under
    // the guard always holds the lock.
    explicit Locker(wLock& heldLock, uint64 timeoutUsec = wTIMEOUT_INFINITE)
        ZU_ACQUIRE(heldLock) ZU_NO_THREAD_SAFETY_ANALYSIS : lock(heldLock)
    {
        wStatus const status = timeoutUsec == wTIMEOUT_INFINITE ? lock.Enter() : wLock_EnterEx(lock, timeoutUsec);
        if (status != Status::SUCCESS)
        {
            ThrowFailedEntry(status);
        }
    }

    /// Releases the lock. A failure is logged and not thrown.
    // The compiler would call the function where a library is large, which costs every addition to a queue.
    [[gnu::always_inline]] ~Locker() ZU_RELEASE() ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        if (wStatus const status = lock.Exit(); status != Status::SUCCESS)
        {
            LogFailedExit(status);
        }
    }

    Locker(Locker const&) = delete;
    Locker& operator=(Locker const&) = delete;

private:
    // Their label is the constructor and the destructor.
    [[noreturn]] static void ThrowFailedEntry(wStatus status);
    static void LogFailedExit(wStatus status) noexcept;

    wLock& lock;
};

} // namespace Zu
