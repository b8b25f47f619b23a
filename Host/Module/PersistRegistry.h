#pragma once

#include "ZuControl/Control/IPersistRegistry.h"
#include "wApi/wMutex.h"

#include <functional>
#include <map>
#include <vector>

namespace ZuCommon
{
class IPersistStore;
}

namespace ZuControl
{
class IControlManager;
}

namespace ZuHost
{

/// Keeps who has registered, and whether something has changed since; has them all initialise, load and save.
///
/// Any thread may call. Operations come one at a time, and a registration ends when none is running; a handler must not
/// end its own from inside an operation.
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

    /// Called after each modification of a job, on the thread that modifies: it only takes note. Set before the first one;
    /// empty for nobody.
    void SetModifiedHandler(std::function<void()> handler);

    void Init(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);
    void Load(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store);
    void Save(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// The one handler that is the manager of all protocols. Throws -999 while none is registered.
    ZuControl::IControlManager& Controls() const;

    /// How often something was said to be modified.
    uint64 ModificationCount() const;

private:
    void ForEachHandler(std::function<void(ZuCommon::IPersistHandler&)> const& operation);

    Zu::Mutex operationLock; // held while handlers run; the other is taken under it

    mutable Zu::Mutex lock; // a leaf
    uint64 lastId ZU_GUARDED_BY(lock) = 0;
    std::map<uint64, ZuCommon::IPersistHandler*> handlers ZU_GUARDED_BY(lock);
    uint64 modificationCount ZU_GUARDED_BY(lock) = 0;
    std::function<void()> modifiedHandler ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
