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
    explicit Locker(wLock& heldLock, uint64 timeoutUsec = wTIMEOUT_INFINITE) ZU_ACQUIRE(heldLock);

    /// Releases the lock. A failure is logged and not thrown.
    ~Locker() ZU_RELEASE();

    Locker(Locker const&) = delete;
    Locker& operator=(Locker const&) = delete;

private:
    wLock& lock;
};

} // namespace Zu
