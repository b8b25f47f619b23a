#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuCommon/PersistDomain.h"
#include "ZuControl/Control/ProtocolStatus.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuControl
{

class ControlInfo;
class IControlActionTarget;

namespace ControlProtocol
{
class IProtocolRegisterAssembly;
}

/// One protocol as REST resources, persistence and metrics see it.
///
/// It takes no lock of its own. A change of the configuration stands between a `Begin...` and its `End...`, which hold the
/// host's update gate; a handler of the event that an `End...` fires and that throws leaves the gate open. What the
/// protocol lacks answers -999 with no text, but for locks and assembly updates, which then do nothing.
class ZUCONTROL_API IControlInstance
{
public:
    /// What a reset sets to its defaults.
    enum DataToReset : uint8
    {
        DataToResetParams = 0,
        DataToResetOutputs = 1,
        DataToResetRegisterAssemblies = 2,
        DataToResetAll = 3
    };

    IControlInstance() noexcept;
    virtual ~IControlInstance(); // first of the slots that others call through: never move one

    virtual ControlInfo const& Info() const = 0;
    virtual char const* TypeName() const = 0;
    virtual ZuEthernetProtocol EthernetProtocolId() const = 0;

    /// Starts or stops the protocol; does nothing when it stands so already. What the protocol throws becomes a problem
    /// that the user sees and goes on to the caller; `IsEnabled` then stays as it was.
    virtual void Enable(bool value) = 0;
    virtual bool IsEnabled() const = 0;

    /// Handlers get the type name and whether the change is one to be noted.
    virtual Zu::Event<std::string, bool>::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(std::string, bool)> handler) = 0;
    virtual void RemoveParamsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) = 0;
    virtual Zu::Event<std::string, bool>::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(std::string, bool)> handler) = 0;
    virtual void RemoveOutputsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) = 0;

    /// Handlers get the type name and the id of the assembly.
    virtual Zu::Event<std::string, std::string>::CallbackId
    AddRegisterAssemblyUpdatedEventHandler(std::function<void(std::string, std::string)> handler) = 0;
    virtual void RemoveRegisterAssemblyUpdatedEventHandler(Zu::Event<std::string, std::string>::CallbackId id) = 0;

    virtual Zu::Params::Group& BeginUpdateParameters() = 0;
    virtual void EndUpdateParameters() = 0;
    virtual void BeginUpdateOutputsMap() = 0;
    virtual void EndUpdateOutputsMap() = 0;
    virtual void BeginUpdateRegisterAssembly() = 0;
    virtual void EndUpdateRegisterAssembly(std::string const& id) = 0;

    virtual ZuCommon::IMetricsKeeper& MetricsKeeper() = 0;
    virtual ZuCommon::IMetricsSource& MetricsSource() = 0;

    virtual Zu::Params::Group const& Params() const = 0;
    virtual char const* ParamsVersion() const = 0;
    virtual void ParamsUpdate() = 0;

    virtual bool HasProtocolOutput() const = 0;
    virtual void OutputsMapBeginLock() = 0;
    virtual void OutputsMapEndLock() = 0;
    virtual Zu::Params::Group const& OutputsMap() const = 0;
    virtual bool HasOutputsActionTarget() const = 0;
    virtual IControlActionTarget& OutputsActionTarget() const = 0;

    /// The protocol takes its outputs over, and the fan-out learns which data sources it wants now.
    virtual void OutputsUpdate() = 0;

    virtual bool HasRegisterAssemblyActionTarget() const = 0;
    virtual IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    virtual ControlProtocol::IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    virtual void RegisterAssemblyBeginLock(char const* id) = 0;
    virtual void RegisterAssemblyEndLock(char const* id) = 0;

    /// As `OutputsUpdate`, for one assembly.
    virtual void RegisterAssemblyUpdate(char const* id) = 0;

    /// Sets data to its defaults, and disables first unless `keepEnabled`. Fires no event.
    virtual void ResetInstance(bool keepEnabled, DataToReset data) = 0;

    /// The protocol's own actions; null when it has none.
    virtual IControlActionTarget* ActionTarget() = 0;

    virtual void OnStartScan() = 0;
    virtual void OnStopScan() = 0;
    virtual void OnFactoryRestore() = 0;

    /// What was last set or reported.
    virtual ProtocolStatus GetProtocolStatus() = 0;

    virtual void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
    virtual void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) = 0;
    virtual void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
};

} // namespace ZuControl
