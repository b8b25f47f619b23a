#pragma once

#include "wApi/wExport.h"
#include "wApi/wLock.h"
#include "wApi/wThreadSafety.h"

namespace Zu
{

/// Holds a lock from here to the end of the scope. It belongs to the thread that made it.
class ZUAPI_API ZU_SCOPED_CAPABILITY Locker
{
public:
    /// Waits for the lock for at most this many microseconds, by default without limit. Throws the failing status, -993 when
    /// the time has run out, with no text.
    explicit Locker(wLock& heldLock, uint64 timeoutUsec = wTIMEOUT_INFINITE) ZU_ACQUIRE(heldLock);

    /// A failure is logged and does not leave.
    ~Locker() ZU_RELEASE();

    Locker(Locker const&) = delete;
    Locker& operator=(Locker const&) = delete;

private:
    wLock& lock;
};

} // namespace Zu
