#pragma once

#include "ZuControl/Export.h"

#include <string>
#include <vector>

namespace ZuControl
{
class IControlActionTarget;
}

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;

/// The register assemblies of one protocol by identifier, each with the action target that changes it.
///
/// Ownership: the protocol owns the group, the assemblies and the action targets, which all live as long as the
/// protocol.
/// Threads: any; only `Add`, `List` and `DataSourceList` may wait, for the locks of the group and of the assemblies.
/// Lock order: a thread that holds the lock of an assembly must not call these three.
class ZUCONTROL_API IProtocolRegisterAssemblyGroup
{
public:
    IProtocolRegisterAssemblyGroup() noexcept;
    virtual ~IProtocolRegisterAssemblyGroup(); // first of the slots that plug-ins call through: never move one

    /// Adds an assembly with its action target; a protocol does so in its constructor, and nothing is ever removed.
    /// Throws `Zu::Status::BAD_ARGUMENT` for an identifier that the group has; the first assembly stays.
    virtual void Add(IProtocolRegisterAssembly& assembly, IControlActionTarget& actionTarget) = 0;
    virtual bool Empty() const = 0;
    /// The identifiers in byte order.
    virtual std::vector<std::string> List() const = 0;
    /// False for null.
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    /// Throws `Zu::Status::BAD_ARGUMENT` for null and `Zu::Status::NOT_FOUND` for an identifier that the group does not
    /// have.
    virtual IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    /// Throws as `RegisterAssembly` does.
    virtual IControlActionTarget& ActionTarget(char const* id) const = 0;
    /// The data sources of all assemblies, in order of the identifiers, each source once.
    virtual std::vector<std::string> DataSourceList() const = 0;
};

} // namespace ZuControl::ControlProtocol
