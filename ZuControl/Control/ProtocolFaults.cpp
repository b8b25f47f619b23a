#include "ZuControl/Control/ProtocolFaults.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

namespace ZuControl
{

namespace
{

/// Whether the exception that is being handled refuses the call.
bool IsRefusal()
{
    try
    {
        throw;
    }
    catch (Zu::Exception const&)
    {
        return true;
    }
    catch (nlohmann::json::exception const&) // a document of a wrong form
    {
        return true;
    }
    catch (...)
    {
        return false;
    }
}

} // namespace

ProtocolFaults::ProtocolFaults() = default;
ProtocolFaults::~ProtocolFaults() = default;

std::vector<std::string> ProtocolFaults::Operations() const
{
    Zu::MutexLock const guard(lock);
    return {failed.begin(), failed.end()};
}

void ProtocolFaults::NoteCaught(char const* operation, bool mayRefuse) noexcept
{
    if (mayRefuse && IsRefusal())
    {
        return;
    }
    ZU_GUARD_BOUNDARY([&] {
        Zu::MutexLock const guard(lock);
        failed.insert(operation);
        hasFaults.store(true, std::memory_order_relaxed);
    });
}

void ProtocolFaults::Forget(char const* operation)
{
    Zu::MutexLock const guard(lock);
    failed.erase(operation);
    hasFaults.store(!failed.empty(), std::memory_order_relaxed);
}

} // namespace ZuControl
