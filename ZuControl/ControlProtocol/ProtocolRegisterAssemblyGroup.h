#pragma once

#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZuControl
{
class IControlActionTarget;
} // namespace ZuControl

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;

/// One assembly of a group with the action target that changes it; the protocol owns both.
struct RegisterAssemblyInstance
{
    IProtocolRegisterAssembly* assembly = nullptr;
    IControlActionTarget* actionTarget = nullptr;
};

/// The register assemblies of a protocol by identifier. See the interface for ownership and exceptions.
class ZUCONTROL_API ProtocolRegisterAssemblyGroup : public IProtocolRegisterAssemblyGroup
{
public:
    ProtocolRegisterAssemblyGroup();
    ~ProtocolRegisterAssemblyGroup() override;

    ProtocolRegisterAssemblyGroup(ProtocolRegisterAssemblyGroup const&) = delete;
    ProtocolRegisterAssemblyGroup& operator=(ProtocolRegisterAssemblyGroup const&) = delete;

    void Add(IProtocolRegisterAssembly& assembly, IControlActionTarget& actionTarget) override;

    /// Takes no lock.
    bool Empty() const override;
    std::vector<std::string> List() const override;
    bool HasRegisterAssembly(char const* id) const override;
    IProtocolRegisterAssembly& RegisterAssembly(char const* id) const override;
    IControlActionTarget& ActionTarget(char const* id) const override;
    std::vector<std::string> DataSourceList() const override;

private:
    RegisterAssemblyInstance const& FindRegisterAssemblyInstance(char const* id) const;
    void RemoveDuplicates(std::vector<std::string>& texts) const;

    // Order: this lock, then the assemblies' locks. Guards the map alone; entries are never removed.
    mutable wLock lock;
    std::map<std::string, RegisterAssemblyInstance> assemblies ZU_GUARDED_BY(lock);

    // A leaf: guards a second index of the map, for lookups by threads that hold the lock of an assembly.
    mutable Zu::Mutex lookupLock;
    std::map<std::string, RegisterAssemblyInstance const*, std::less<>> lookup ZU_GUARDED_BY(lookupLock);

    std::atomic<uint64> count{0}; // of the map, for readers without a lock
};

} // namespace ZuControl::ControlProtocol
