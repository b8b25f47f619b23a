#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInstanceMetrics.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/ProtocolFaults.h"
#include "ZuControl/Export.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZuCommon
{
class ProblemsManager;
} // namespace ZuCommon

namespace ZuControl
{

namespace ControlProtocol
{
class IProtocol;
class IProtocolOutput;
class IProtocolRegisterAssembly;
} // namespace ControlProtocol

class ControlInfo;
class IControlScanResults;
class IUpdateGate;

/// The arguments of the constructor of ControlInstance. All pointers are set; all but `protocol` are not owned and
/// outlive the instance.
struct ControlInstanceParams
{
    ControlInfo const* info = nullptr;
    IUpdateGate* updateGate = nullptr;
    IControlScanResults* scanResults = nullptr;
    ZuCommon::ProblemsManager* problems = nullptr;
    std::shared_ptr<ControlProtocol::IProtocol> protocol;
};

/// Connects one protocol with the rest of the system.
///
/// An instance begins disabled. Its destructor does not stop the protocol: the protocol's own destructor does. The
/// destructor ends the delivery of results to the protocol and removes its handlers from the protocol's events; it
/// waits for handlers that are running. The thread that destroys an instance therefore holds no lock that a listener
/// takes.
class ZUCONTROL_API ControlInstance final : public IControlInstance
{
public:
    explicit ControlInstance(ControlInstanceParams& params);
    ~ControlInstance() override;

    ControlInstance(ControlInstance const&) = delete;
    ControlInstance& operator=(ControlInstance const&) = delete;

    ControlInfo const& Info() const override;
    char const* TypeName() const override;
    ZuEthernetProtocol EthernetProtocolId() const override;
    void Enable(bool value) override;
    bool IsEnabled() const override;
    Zu::Event<std::string, bool>::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(std::string, bool)> handler) override;
    void RemoveParamsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) override;
    Zu::Event<std::string, bool>::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(std::string, bool)> handler) override;
    void RemoveOutputsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) override;
    Zu::Event<std::string, std::string>::CallbackId
    AddRegisterAssemblyUpdatedEventHandler(std::function<void(std::string, std::string)> handler) override;
    void RemoveRegisterAssemblyUpdatedEventHandler(Zu::Event<std::string, std::string>::CallbackId id) override;
    Zu::Params::Group& BeginUpdateParameters() override;
    void EndUpdateParameters() override;
    void BeginUpdateOutputsMap() override;
    void EndUpdateOutputsMap() override;
    void BeginUpdateRegisterAssembly() override;
    void EndUpdateRegisterAssembly(std::string const& id) override;
    ZuCommon::IMetricsKeeper& MetricsKeeper() override;
    ZuCommon::IMetricsSource& MetricsSource() override;
    Zu::Params::Group const& Params() const override;
    char const* ParamsVersion() const override;
    void ParamsUpdate() override;
    bool HasProtocolOutput() const override;
    void OutputsMapBeginLock() override;
    void OutputsMapEndLock() override;
    Zu::Params::Group const& OutputsMap() const override;
    bool HasOutputsActionTarget() const override;
    IControlActionTarget& OutputsActionTarget() const override;
    void OutputsUpdate() override;
    bool HasRegisterAssemblyActionTarget() const override;
    IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(char const* id) const override;
    ControlProtocol::IProtocolRegisterAssembly& RegisterAssembly(char const* id) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void RegisterAssemblyBeginLock(char const* id) override;
    void RegisterAssemblyEndLock(char const* id) override;
    void RegisterAssemblyUpdate(char const* id) override;
    void ResetInstance(bool keepEnabled, DataToReset data) override;
    IControlActionTarget* ActionTarget() override;
    void OnStartScan() override;
    void OnStopScan() override;
    void OnFactoryRestore() override;
    ProtocolStatus GetProtocolStatus() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

    /// The calls of `Enable(true)` that have thrown. Any thread may call.
    ControlVitals::FailedStarts FailedStarts() const;

    /// The operations of the protocol that have failed. A caller that calls an object of the protocol directly, for
    /// example an action target, makes that call through this record too.
    ProtocolFaults& Faults() const;

private:
    void NoteFailedStart();
    void StartProtocol();
    void StopProtocol();
    void UpdateScanResult();
    void UpdateFanOut();
    ControlProtocol::IProtocolOutput& Output() const;
    ControlProtocol::IProtocolRegisterAssembly& Assembly(char const* id) const;
    ControlProtocol::IProtocol* GetProtocol() const;
    void RegisterProblem(char const* format, char const* text);
    void AddProtocolHandlers();
    void RemoveProtocolHandlers();
    void EndResultDelivery();

    void ProtocolParamsInternalUpdateHandler(bool notify);
    void ProtocolStatusUpdateHandler(ProtocolStatus newStatus);
    void ProtocolOutputsInternalUpdateHandler(bool notify);

    ControlInfo const* const info;
    bool const defaultEnabled = false;
    std::atomic<bool> enabled{false};
    std::atomic<ProtocolStatus> status{ProtocolStatus::Stopped}; // the protocol reports on threads of its own
    std::shared_ptr<ControlProtocol::IProtocol> protocol;
    IUpdateGate* const updateGate;
    IControlScanResults* const scanResults;
    // Each list is guarded: listeners are added and removed while a thread of the protocol may notify.
    Zu::Event<std::string, bool> paramsUpdatedEvent;
    Zu::Event<std::string, bool> outputsUpdatedEvent;
    Zu::Event<std::string, std::string> registerAssemblyUpdatedEvent;
    mutable ProtocolFaults faults; // it has a lock of its own
    ControlInstanceMetrics metrics;
    ZuCommon::ProblemsManager* const problems;
    ZuCommon::ProblemsTracker problemsTracker;
    Zu::Event<bool>::CallbackId paramsHandlerId;
    Zu::Event<ProtocolStatus>::CallbackId statusHandlerId;
    Zu::Event<bool>::CallbackId outputsHandlerId;

    mutable Zu::Mutex failedStartsLock; // a leaf
    ControlVitals::FailedStarts failedStarts ZU_GUARDED_BY(failedStartsLock);

    // Needed beside the ids: a protocol of a plug-in may fail to remove a handler. Last, so that they end first.
    Zu::Subscription paramsSubscription;
    Zu::Subscription statusSubscription;
    Zu::Subscription outputsSubscription;
};

} // namespace ZuControl
