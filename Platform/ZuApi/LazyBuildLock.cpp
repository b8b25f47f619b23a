#include "ZuApi/LazyBuildLock.h"

#include "wApi/wMutex.h"

namespace Zu::Properties::Internal
{

Zu::RecursiveMutex& LazyBuildLock()
{
    // Never freed: nodes in static objects may be destroyed after any other static.
    static auto* const lock = new Zu::RecursiveMutex;
    return *lock;
}

} // namespace Zu::Properties::Internal
