#include "Host/Module/PersistRegistry.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlManager.h"

namespace ZuHost
{

PersistRegistry::PersistRegistry() = default;

PersistRegistry::~PersistRegistry() = default;

uint64 PersistRegistry::Register(ZuCommon::IPersistHandler& handler, std::string const& /*name*/)
{
    std::scoped_lock const guard(lock);
    handlers.emplace(++lastId, &handler);
    return lastId;
}

void PersistRegistry::Deregister(uint64 id)
{
    std::scoped_lock const guard(lock);
    handlers.erase(id);
}

void PersistRegistry::MarkModified(ZuCommon::IPersistHandler& /*handler*/, ZuCommon::PersistDomain /*domain*/,
                                   uint64 /*reserved*/)
{
    std::scoped_lock const guard(lock);
    ++modificationCount;
}

ZuControl::IControlManager& PersistRegistry::Controls() const
{
    std::scoped_lock const guard(lock);
    for (auto const& entry : handlers)
    {
        if (auto* const controls = dynamic_cast<ZuControl::IControlManager*>(entry.second); controls != nullptr)
        {
            return *controls;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "No module has registered");
}

uint64 PersistRegistry::ModificationCount() const
{
    std::scoped_lock const guard(lock);
    return modificationCount;
}

} // namespace ZuHost
