#include "ZuApi/Threads/Locker.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"

namespace Zu
{

// The analysis cannot see that a failing status means an untaken lock. This guard throws then, so that code under the
// guard always holds the lock.
Locker::Locker(wLock& heldLock, uint64 timeoutUsec) ZU_NO_THREAD_SAFETY_ANALYSIS : lock(heldLock)
{
    ZU_CHECK(timeoutUsec == wTIMEOUT_INFINITE ? wLock_Enter(lock) : wLock_EnterEx(lock, timeoutUsec));
}

Locker::~Locker() ZU_NO_THREAD_SAFETY_ANALYSIS
{
    if (wStatus const status = wLock_Exit(lock); status != Status::SUCCESS)
    {
        ZU_GUARD_DESTRUCTOR([status] { ZU_THROW(status); });
    }
}

} // namespace Zu
