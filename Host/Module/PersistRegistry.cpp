#include "Host/Module/PersistRegistry.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlManager.h"
#include "wApi/wMutex.h"

namespace ZuHost
{

PersistRegistry::PersistRegistry() = default;

PersistRegistry::~PersistRegistry() = default;

uint64 PersistRegistry::Register(ZuCommon::IPersistHandler& handler, std::string const& /*name*/)
{
    Zu::MutexLock const guard(lock);
    handlers.emplace(++lastId, &handler);
    return lastId;
}

void PersistRegistry::Deregister(uint64 id)
{
    Zu::MutexLock const operationEnded(operationLock);
    Zu::MutexLock const guard(lock);
    handlers.erase(id);
}

void PersistRegistry::MarkModified(ZuCommon::IPersistHandler& /*handler*/, ZuCommon::PersistDomain /*domain*/,
                                   uint64 /*reserved*/)
{
    std::function<void()> told;
    {
        Zu::MutexLock const guard(lock);
        ++modificationCount;
        told = modifiedHandler;
    }
    if (told)
    {
        told();
    }
}

void PersistRegistry::SetModifiedHandler(std::function<void()> handler)
{
    Zu::MutexLock const guard(lock);
    modifiedHandler = std::move(handler);
}

void PersistRegistry::Init(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store)
{
    ForEachHandler([&](ZuCommon::IPersistHandler& handler) { handler.InitPersistDomain(domain, store); });
}

void PersistRegistry::Load(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store)
{
    ForEachHandler([&](ZuCommon::IPersistHandler& handler) { handler.LoadPersistDomain(domain, store); });
}

void PersistRegistry::Save(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store)
{
    ForEachHandler([&](ZuCommon::IPersistHandler& handler) { handler.SavePersistDomain(domain, store); });
}

ZuControl::IControlManager& PersistRegistry::Controls() const
{
    Zu::MutexLock const guard(lock);
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
    Zu::MutexLock const guard(lock);
    return modificationCount;
}

void PersistRegistry::ForEachHandler(std::function<void(ZuCommon::IPersistHandler&)> const& operation)
{
    Zu::MutexLock const oneAtATime(operationLock);
    std::vector<ZuCommon::IPersistHandler*> registered;
    {
        Zu::MutexLock const guard(lock);
        for (auto const& [id, handler] : handlers)
        {
            registered.push_back(handler);
        }
    }
    for (ZuCommon::IPersistHandler* const handler : registered)
    {
        operation(*handler);
    }
}

} // namespace ZuHost
