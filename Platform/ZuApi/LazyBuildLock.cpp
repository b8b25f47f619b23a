#include "ZuApi/LazyBuildLock.h"

namespace Zu::Properties::Internal
{

std::recursive_mutex& LazyBuildLock()
{
    static auto* const lock = new std::recursive_mutex; // never freed: nodes of static storage may outlive any static
    return *lock;
}

} // namespace Zu::Properties::Internal
