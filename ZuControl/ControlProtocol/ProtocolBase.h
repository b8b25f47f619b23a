#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "ZuCommon/ProblemsTracker.h"
#include "ZuControl/Control/ControlProtocolEnviron.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/ProtocolInitParams.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl
{
class ControlInfo;
}

namespace ZuControl::ControlProtocol
{

/// What all protocols share: their parameters, outputs and register assemblies as far as they have them, three internal
/// events, the place in the result fan-out, and the commands common to all protocols.
///
/// A derived class calls `Init` before anybody asks for what it hands over, and gives start, stop, metrics and the
/// parameter operations. Its destructor stops it; by then its instance has seen to it that no results come any more.
/// Threads: no lock. Commands arrive on a thread of the protocol, their ends on "CtlProtoOp.Disp".
class ZUCONTROL_API ProtocolBase : public IProtocol
{
public:
    ~ProtocolBase() override;

    ProtocolBase(ProtocolBase const&) = delete;
    ProtocolBase& operator=(ProtocolBase const&) = delete;

    char const* DisplayName() const override;
    ZuEthernetProtocol EthernetProtocolId() override;
    void BeginUpdateParams(char const* key) override;
    void EndUpdateParams() override;
    Zu::Params::Group& Params() const override;
    char const* ParamsVersion() const override;
    Zu::Event<bool>::CallbackId AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) override;
    void RemoveParamsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) override;
    void NotifyParamsInternalUpdateEventHandler(bool notify) override;
    Zu::Event<ProtocolStatus>::CallbackId
    AddProtocolStatusUpdateEventHandler(std::function<void(ProtocolStatus)> handler) override;
    void RemoveProtocolStatusUpdateEventHandler(Zu::Event<ProtocolStatus>::CallbackId& id) override;
    void NotifyProtocolStatusUpdateEventHandler(ProtocolStatus status) override;
    Zu::Event<bool>::CallbackId AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) override;
    void RemoveOutputsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) override;
    void NotifyOutputsInternalUpdateEventHandler(bool notify) override;
    void OutputsUpdate() override;
    bool HasProtocolOutput() const override;
    IProtocolOutput& Outputs() const override;
    bool HasOutputsActionTarget() const override;
    IControlActionTarget& OutputsActionTarget() const override;
    void ProcessResultSets(void* resultSets) override;
    void RegisterControlScanResultsHandler(IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(IControlScanResults& results) override;
    IControlActionTarget* ActionTarget() override;
    void RegisterAssemblyUpdate(char const* id) override;
    bool HasRegisterAssemblyActionTarget() const override;
    IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(char const* id) const override;
    IProtocolRegisterAssembly& RegisterAssembly(char const* id) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void ConfigureDefaultRegisterAssembly() override;
    std::vector<std::string> DataSourceList() const override;
    void OnStartScan() override;
    void OnStopScan() override;
    void OnFactoryRestore() override;
    void UpdateConnectedClientCount(uint64 count) override;
    ControlRegisterCommandStatus CompletedOperationStatus() const override;

    /// Throws -999, no text, where the system has none.
    IControlHardwareManager& HardwareManager() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    Zu::Properties::Structure const& GetMetrics() const override;

    /// The end of the operation that a command began: status 1 is success.
    void OperationCompleted(int status);

    /// From now on no result sets reach this protocol; a batch in progress on another thread has ended. For whoever is
    /// about to let the protocol go while the fan-out still knows it. A new registration opens the way again.
    void CloseResultHandlerGate() noexcept;

protected:
    /// What `environ` refers to outlives the protocol. Throws -997 without operations or without the deployment.
    ProtocolBase(ZuEthernetProtocol protocol, char const* protocolDisplayName, ControlProtocolEnviron const& environ);

    static void Describe(ControlInfo& info);

    /// Replaces whatever was handed over before.
    void Init(ProtocolInitParams& initParams);

    /// Begins the operation of a received command. What the operations refuse leaves as their exception, and the
    /// operation still counts as in progress: the derived class decides what its client sees, with
    /// `SetOperationInProgress`.
    void ProcessReceivedCommonCommands(ControlRegisterCommandData command);

    /// Whether the two ask for the same; the request id plays no part.
    bool IsDuplicateCommand(ControlRegisterCommandData first, ControlRegisterCommandData second);

    /// Reports control drops as a problem: at every check from the first drop on, until the next scan start. Throws -999,
    /// no text, without a metrics record.
    void CheckControlDrops();

    ControlRegisterCommandStatus GetCommandStatus();
    bool OperationInProgress() const;
    void SetOperationInProgress(bool isInProgress);

    /// Whether the system runs without a scanner of its own.
    bool ScannerIsOptional() const;

    bool derivedFlag = false; ///< the derived class's to use
    void* const allocator;
    char const* paramsVersion = "1";

private:
    void OpEndEventHandler(int status);
    void EndCommand(ControlRegisterCommandStatus status);
    uint64 ControlDrops() const;
    static bool AskScannerOptional(IDeploymentQuery& deployment);

    ZuEthernetProtocol const protocolId;
    Zu::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    IControlActionTarget* outputsActionTarget = nullptr;
    Zu::Properties::Structure* metricsData = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
    std::string const displayName;
    std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> resultHandlerId;
    // The protocol notifies on threads of its own, also while its instance goes and takes its handlers with it.
    Zu::Event<bool> paramsInternalUpdateEvent;
    Zu::Event<ProtocolStatus> protocolStatusUpdateEvent;
    Zu::Event<bool> outputsInternalUpdateEvent;
    std::atomic<IControlScanResults*> scanResults{nullptr}; // not owned: it publishes nothing but the address
    std::atomic<bool> operationInProgress{false};           // publishes the status below when it falls
    std::atomic<ControlRegisterCommandStatus> commandStatus{CommandStatusNone};
    ControlProtocolOperations* const operations;
    Zu::Event<int>::CallbackId opEndHandlerId;
    IControlHardwareManager* const hardwareManager;
    ZuCommon::ProblemsManager* const problems;
    ZuCommon::ProblemsTracker problemsTracker;
    std::atomic<uint64> lastControlDrops{0};
    bool scannerOptional = false;

    // Last, so that they close first: the fan-out and the operations may still hold a handler of this object.
    std::unique_ptr<Zu::CallbackGate> resultHandlerGate; // of the latest registration; an earlier one delivers no more
    Zu::CallbackGate opEndGate;
};

} // namespace ZuControl::ControlProtocol
