#include "ZuApi/LazyBuildLock.h"

#include "wApi/wMutex.h"

namespace Zu::Properties::Internal
{

Zu::RecursiveMutex& LazyBuildLock()
{
    static auto* const lock = new Zu::RecursiveMutex; // never freed: nodes of static storage may outlive any static
    return *lock;
}

} // namespace Zu::Properties::Internal
