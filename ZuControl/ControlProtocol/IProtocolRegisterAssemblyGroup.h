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
/// Ownership: neither assemblies nor action targets; the protocol owns both and never takes one away. Threads: any.
class ZUCONTROL_API IProtocolRegisterAssemblyGroup
{
public:
    IProtocolRegisterAssemblyGroup() noexcept;
    virtual ~IProtocolRegisterAssemblyGroup(); // first of the slots that plug-ins call through: never move one

    /// Throws -997 for an identifier that is there already; the first stays.
    virtual void Add(IProtocolRegisterAssembly& assembly, IControlActionTarget& actionTarget) = 0;
    virtual bool Empty() const = 0;
    /// The identifiers in byte order.
    virtual std::vector<std::string> List() const = 0;
    /// False for null.
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    /// Throws -997 for null and -999 for an identifier that is not there.
    virtual IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    /// Refuses what `RegisterAssembly` refuses.
    virtual IControlActionTarget& ActionTarget(char const* id) const = 0;
    /// The data sources of all assemblies, in order of the identifiers, each source once.
    virtual std::vector<std::string> DataSourceList() const = 0;
};

} // namespace ZuControl::ControlProtocol
