#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zu::Params
{
class Group;
} // namespace Zu::Params

namespace Zu::Properties
{
class Structure;
} // namespace Zu::Properties

namespace ZuControl
{
class ControlInfo;
class IControlActionTarget;
} // namespace ZuControl

namespace ZuControl::ControlProtocol
{

class IProtocolOutput;
class IProtocolRegisterAssemblyGroup;

/// The objects that a derived protocol gives to `ProtocolBase::Init`; a pointer is null when the protocol has no such
/// object. The derived protocol owns them and keeps them for its whole life.
struct ProtocolInitParams
{
    Zu::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    IControlActionTarget* outputsActionTarget = nullptr;
    Zu::Properties::Structure* metricsData = nullptr; ///< holds "controlDrops", a Metric or a Value<uint64>
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
};

/// The base of all protocols: their parameters, outputs and register assemblies as far as they have them, three
/// internal events, the registration at the result fan-out, and the commands common to all protocols. IProtocol states
/// the contract of each operation.
///
/// A derived class calls `Init` in its constructor, and implements start, stop, metrics and the parameter operations.
/// Its destructor calls `CloseResultHandlerGate` first and then stops the service.
/// Threads: the class takes no lock around a call; the events guard their lists. Commands arrive on a thread of the
/// protocol, their ends on "CtlProtoOp.Disp".
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

    IControlHardwareManager& HardwareManager() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    Zu::Properties::Structure const& GetMetrics() const override;

    /// Ends the operation that a command began: `Zu::Status::SUCCESS` is success, any other status a failure. The end
    /// event of an operation does the same on "CtlProtoOp.Disp"; a derived class calls this for an operation that has
    /// no such end, for example after a refusal. Any thread may call. Neither blocks nor throws.
    void OperationCompleted(int status);

    /// Ends the delivery of result sets to this protocol, and waits for a batch in progress on another thread. The
    /// owner calls this before it destroys a protocol while the fan-out still has its handler. A new registration
    /// delivers again.
    void CloseResultHandlerGate() noexcept;

protected:
    /// The objects that `environ` points to outlive the protocol. Throws `Zu::Status::BAD_ARGUMENT` without operations
    /// or without the deployment.
    ProtocolBase(ZuEthernetProtocol protocol, char const* protocolDisplayName, ControlProtocolEnviron const& environ);

    static void Describe(ControlInfo& info);

    /// Stores the pointers of `initParams`, in place of earlier ones. Call it in the constructor: other threads read
    /// the pointers without a lock later.
    void Init(ProtocolInitParams& initParams);

    /// Begins the operation of a received command and does not wait for its end. A refusal, `Zu::Status::BUSY` or
    /// `Zu::Status::BAD_ARGUMENT`, leaves as an exception, and the operation still counts as in progress: the derived
    /// class decides what its client sees, with `SetOperationInProgress` or `OperationCompleted`.
    void ProcessReceivedCommonCommands(ControlRegisterCommandData command);

    /// Whether the two commands ask for the same operation; the request id does not count.
    bool IsDuplicateCommand(ControlRegisterCommandData first, ControlRegisterCommandData second);

    /// Reports control drops as a problem: at every check from the first drop on, until the next scan start. Call it in
    /// `UpdateMetrics`, on one thread at a time. Throws `Zu::Status::NOT_FOUND`, no text, without a metrics record.
    void CheckControlDrops();

    ControlRegisterCommandStatus GetCommandStatus();
    bool OperationInProgress() const;
    void SetOperationInProgress(bool isInProgress);

    /// Whether the system runs without a scanner of its own.
    bool ScannerIsOptional() const;

    bool derivedFlag = false; ///< for the derived class; the base does not use it
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
    // Each list is guarded: the protocol notifies on threads of its own, also while its instance is destroyed and
    // removes its handlers.
    Zu::Event<bool> paramsInternalUpdateEvent;
    Zu::Event<ProtocolStatus> protocolStatusUpdateEvent;
    Zu::Event<bool> outputsInternalUpdateEvent;
    std::atomic<IControlScanResults*> scanResults{nullptr}; // not owned; publishes nothing but the address
    std::atomic<bool> operationInProgress{false};           // publishes `commandStatus` when it becomes false
    std::atomic<ControlRegisterCommandStatus> commandStatus{CommandStatusNone};
    ControlProtocolOperations* const operations;
    Zu::Event<int>::CallbackId opEndHandlerId;
    IControlHardwareManager* const hardwareManager;
    ZuCommon::ProblemsManager* const problems;
    ZuCommon::ProblemsTracker problemsTracker;
    std::atomic<uint64> lastControlDrops{0};
    bool scannerOptional = false;

    // Last, so that it ends first: the fan-out may still hold a handler of this object.
    Zu::Subscription resultSubscription; // of the latest registration; an earlier one delivers no more
};

} // namespace ZuControl::ControlProtocol
