#pragma once

#include "ZuControl/Control/IPersistRegistry.h"

#include <map>
#include <mutex>

namespace ZuControl
{
class IControlManager;
}

namespace ZuHost
{

/// Keeps who has registered, and whether something has changed since. Any thread may call.
class PersistRegistry final : public ZuControl::IPersistRegistry
{
public:
    PersistRegistry();
    ~PersistRegistry();

    PersistRegistry(PersistRegistry const&) = delete;
    PersistRegistry& operator=(PersistRegistry const&) = delete;

    uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& name) override;
    void Deregister(uint64 id) override;
    void MarkModified(ZuCommon::IPersistHandler& handler, ZuCommon::PersistDomain domain, uint64 reserved) override;

    /// The one handler that is the manager of all protocols. Throws -999 while none is registered.
    ZuControl::IControlManager& Controls() const;

    /// How often something was said to be modified.
    uint64 ModificationCount() const;

private:
    mutable std::mutex lock; // a leaf: guards all below
    uint64 lastId = 0;
    std::map<uint64, ZuCommon::IPersistHandler*> handlers;
    uint64 modificationCount = 0;
};

} // namespace ZuHost
