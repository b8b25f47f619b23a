#pragma once

#include "ZuControl/Control/ControlModuleEnviron.h"
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

/// Keeps the registered handlers and counts modifications. Calls all handlers to initialise, load or save.
///
/// Any thread may call. `Init`, `Load` and `Save` run one at a time. `Deregister` waits for a running operation, so a
/// handler must not call it from inside one.
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

    /// Sets the function to call after each modification, on the thread that modifies; it must return at once. Set it
    /// before the first modification. Empty: no call.
    void SetModifiedHandler(std::function<void()> handler);

    // Each calls all handlers, in the order of their registration. An exception of a handler ends the operation.

    void Init(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);
    void Load(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store);
    void Save(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store);

    /// Returns the registered handler that manages all protocols. Throws `Zu::Status::NOT_FOUND` while there is none.
    ZuControl::IControlManager& Controls() const;

    /// The number of calls of `MarkModified`.
    uint64 ModificationCount() const;

private:
    void ForEachHandler(std::function<void(ZuCommon::IPersistHandler&)> const& operation);

    Zu::Mutex operationLock; // held while handlers run; `lock` is taken under it

    mutable Zu::Mutex lock; // a leaf
    uint64 lastId ZU_GUARDED_BY(lock) = 0;
    std::map<uint64, ZuCommon::IPersistHandler*> handlers ZU_GUARDED_BY(lock);
    uint64 modificationCount ZU_GUARDED_BY(lock) = 0;
    std::function<void()> modifiedHandler ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
