#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace ZuControl::ControlProtocol
{

ProtocolRegisterAssemblyGroup::ProtocolRegisterAssemblyGroup()
{
    ZU_CHECK(wLock_Construct(&lock, nullptr));
}

ProtocolRegisterAssemblyGroup::~ProtocolRegisterAssemblyGroup() = default;

void ProtocolRegisterAssemblyGroup::Add(IProtocolRegisterAssembly& assembly, IControlActionTarget& actionTarget)
{
    Zu::Locker const guard(lock);
    auto const [entry, isNew] =
        assemblies.try_emplace(assembly.Id(), RegisterAssemblyInstance{&assembly, &actionTarget});
    if (!isNew)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Failed to insert register assembly %1$s. Check if it is a duplicate",
                 assembly.Id());
    }
    {
        Zu::MutexLock const lookupGuard(lookupLock);
        lookup.emplace(entry->first, &entry->second);
    }
    count.store(assemblies.size(), std::memory_order_relaxed);
}

bool ProtocolRegisterAssemblyGroup::Empty() const
{
    return count.load(std::memory_order_relaxed) == 0;
}

std::vector<std::string> ProtocolRegisterAssemblyGroup::List() const
{
    std::vector<std::string> ids;
    if (Empty())
    {
        return ids;
    }
    Zu::Locker const guard(lock);
    for (auto const& entry : assemblies)
    {
        ids.push_back(entry.first);
    }
    return ids;
}

bool ProtocolRegisterAssemblyGroup::HasRegisterAssembly(char const* id) const
{
    if (id == nullptr || Empty())
    {
        return false;
    }
    Zu::MutexLock const guard(lookupLock);
    return lookup.contains(id);
}

IProtocolRegisterAssembly& ProtocolRegisterAssemblyGroup::RegisterAssembly(char const* id) const
{
    return *FindRegisterAssemblyInstance(id).assembly;
}

IControlActionTarget& ProtocolRegisterAssemblyGroup::ActionTarget(char const* id) const
{
    return *FindRegisterAssemblyInstance(id).actionTarget;
}

std::vector<std::string> ProtocolRegisterAssemblyGroup::DataSourceList() const
{
    std::vector<std::string> sources;
    if (Empty())
    {
        return sources;
    }
    {
        Zu::Locker const guard(lock);
        for (auto const& entry : assemblies)
        {
            std::vector<std::string> more = entry.second.assembly->DataSourceList(); // takes the assembly's lock
            std::move(more.begin(), more.end(), std::back_inserter(sources));
        }
    }
    RemoveDuplicates(sources);
    return sources;
}

RegisterAssemblyInstance const& ProtocolRegisterAssemblyGroup::FindRegisterAssemblyInstance(char const* id) const
{
    if (id == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "No register assembly identifier provided");
    }
    if (Empty())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "No register assembly has been added");
    }
    Zu::MutexLock const guard(lookupLock); // not the group's: the caller may hold the lock of an assembly
    auto const found = lookup.find(id);
    if (found == lookup.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "Register assembly %1$s not found", id);
    }
    return *found->second; // stays valid: entries are never removed, and nodes of the map do not move
}

void ProtocolRegisterAssemblyGroup::RemoveDuplicates(std::vector<std::string>& texts) const
{
    std::unordered_set<std::string> seen;
    std::erase_if(texts, [&seen](std::string const& text) { return !seen.insert(text).second; });
}

} // namespace ZuControl::ControlProtocol
