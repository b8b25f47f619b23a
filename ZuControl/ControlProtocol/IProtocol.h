#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuCommon/PersistDomain.h"
#include "ZuControl/Control/ProtocolStatus.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandStatus.h"
#include "ZuControl/Export.h"

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuControl
{
class IControlActionTarget;
class IControlHardwareManager;
class IControlScanResults;
} // namespace ZuControl

namespace ZuControl::ControlProtocol
{

class IProtocolOutput;
class IProtocolRegisterAssembly;

/// One control protocol as its instance sees it. Protocols derive from ProtocolBase, which gives most of it.
///
/// Ownership: the instance shares the protocol; what the protocol hands out by reference stays its own. Threads: those of
/// the REST service, of the host and of the result dispatcher call in, without a lock of their own.
class ZUCONTROL_API IProtocol : public ZuCommon::IMetricsKeeper, public ZuCommon::IMetricsSource
{
public:
    IProtocol() noexcept;
    ~IProtocol() override; // first of the slots that plug-ins call through: never move one

    // UpdateMetrics and ResetMetrics come here, GetMetrics with the second base.

    virtual char const* DisplayName() const = 0;
    virtual ZuEthernetProtocol EthernetProtocolId() = 0;

    /// The parameters have been changed from outside.
    virtual void ParamsUpdate() = 0;
    virtual void ResetParams() = 0;
    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void BeginUpdateParams(char const* key) = 0;
    virtual void EndUpdateParams() = 0;

    /// Throws -999, no text, when there are none.
    virtual Zu::Params::Group& Params() const = 0;
    virtual char const* ParamsVersion() const = 0;

    // The three internal events run their handlers in order of addition on the thread that notifies. Handlers are added
    // and removed where nothing can be notifying.
    virtual Zu::Event<bool>::CallbackId AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) = 0;
    virtual void RemoveParamsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) = 0;
    virtual void NotifyParamsInternalUpdateEventHandler(bool notify) = 0;
    virtual Zu::Event<ProtocolStatus>::CallbackId
    AddProtocolStatusUpdateEventHandler(std::function<void(ProtocolStatus)> handler) = 0;
    virtual void RemoveProtocolStatusUpdateEventHandler(Zu::Event<ProtocolStatus>::CallbackId& id) = 0;
    virtual void NotifyProtocolStatusUpdateEventHandler(ProtocolStatus status) = 0;
    virtual Zu::Event<bool>::CallbackId AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) = 0;
    virtual void RemoveOutputsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) = 0;
    virtual void NotifyOutputsInternalUpdateEventHandler(bool notify) = 0;

    /// The output map has been changed from outside. Throws -996, no text, where that is not supported.
    virtual void OutputsUpdate() = 0;
    virtual bool HasProtocolOutput() const = 0;
    /// Throws -999, no text, when there is none.
    virtual IProtocolOutput& Outputs() const = 0;
    virtual bool HasOutputsActionTarget() const = 0;
    /// Throws -999, no text, when there is none.
    virtual IControlActionTarget& OutputsActionTarget() const = 0;

    /// A batch of result sets, a `wArrayList*`; called on the thread of the protocol's result dispatcher.
    virtual void ProcessResultSets(void* resultSets) = 0;
    virtual void RegisterControlScanResultsHandler(IControlScanResults& results) = 0;
    virtual void DeregisterControlScanResultsHandler(IControlScanResults& results) = 0;

    /// The protocol's own actions, or null.
    virtual IControlActionTarget* ActionTarget() = 0;

    /// The named assembly has been changed from outside. Throws -996, no text, where that is not supported.
    virtual void RegisterAssemblyUpdate(char const* id) = 0;
    virtual bool HasRegisterAssemblyActionTarget() const = 0;
    virtual IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    virtual IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    virtual void ConfigureDefaultRegisterAssembly() = 0;

    /// The data sources that the protocol sends.
    virtual std::vector<std::string> DataSourceList() const = 0;

    virtual void OnStartScan() = 0;
    virtual void OnStopScan() = 0;
    virtual void OnFactoryRestore() = 0;
    virtual void UpdateConnectedClientCount(uint64 count) = 0;
    virtual ControlRegisterCommandStatus CompletedOperationStatus() const = 0;
    virtual IControlHardwareManager& HardwareManager() = 0;

    virtual void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
    virtual void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) = 0;
    virtual void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
};

} // namespace ZuControl::ControlProtocol
