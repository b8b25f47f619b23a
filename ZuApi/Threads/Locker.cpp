#include "ZuApi/Threads/Locker.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"

namespace Zu
{

void Locker::ThrowFailedEntry(wStatus status)
{
    throw Exception(__LINE__, __FILE__, status, "Zu::Locker::Locker");
}

void Locker::LogFailedExit(wStatus status) noexcept
{
    constexpr char const* LABEL = "Zu::Locker::~Locker";
    GuardStep(__LINE__, __FILE__, LABEL, "Exception thrown in destructor",
              [status] { throw Exception(__LINE__, __FILE__, status, LABEL); });
}

} // namespace Zu
