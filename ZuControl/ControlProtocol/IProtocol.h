#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
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

/// One control protocol as its instance sees it. Protocols derive from ProtocolBase, which implements most operations.
///
/// Ownership: the instance shares the protocol. An object that an operation returns by reference or by pointer stays
/// the protocol's and lives as long as the protocol. An argument that is passed by reference or by pointer is valid for
/// the call.
///
/// Threads: the contracts below call these the configuration threads: the workers of the REST service, the host's main
/// thread and its threads that load jobs, save jobs and retry starts, and the worker of ControlProtocolOperations, on
/// which a job load runs that a protocol has commanded. Changes of services come one at a time; reads run beside each
/// other. Result batches, metrics, scan events and ends of operations come on threads of their own, beside everything
/// else.
///
/// States: an operation may be called in each state, enabled or not, unless its contract names the state.
///
/// Exceptions: each operation may throw, unless its contract says otherwise. `Zu::Exception` and an exception of the
/// JSON library refuse the call: the caller, a client or a job load, gets the text. Any other exception reaches the
/// caller too, and counts as a fault of the operation: the host shows a problem that names the operation, until a later
/// call of it succeeds.
class ZUCONTROL_API IProtocol : public ZuCommon::IMetricsKeeper, public ZuCommon::IMetricsSource
{
public:
    IProtocol() noexcept;
    ~IProtocol() override; // first of the slots that plug-ins call through: never move one

    // The slots of UpdateMetrics and ResetMetrics stand here, that of GetMetrics with the second base.
    //
    // `UpdateMetrics` is called four times a second on the thread "AsyncTimer", whether the protocol is enabled or not.
    // It must not block: the metrics of all services wait for it, and the host reports a call of more than a second.
    // When it throws, the timer logs the exception, clients see the metrics of the last update, and the services after
    // this one in the order of their names miss the round. `GetMetrics` is called on configuration threads and timer
    // threads; an in-process reader of the live record may call it during an update. It must not block. Its exceptions
    // reach the reader. `ResetMetrics` may be called on any thread, also during an update; the module itself does not
    // call it.

    // The next two are called on any thread, also beside each other. They return the same value for the life of the
    // protocol, and must neither block nor throw.
    virtual char const* DisplayName() const = 0;
    virtual ZuEthernetProtocol EthernetProtocolId() = 0;

    // The next four are called on configuration threads. Each may block; meanwhile the client or the job load waits.

    /// Takes over parameters that a client or a job load has stored in `Params()`. Its exceptions reach the client or
    /// fail the load; the parameters keep the new values.
    virtual void ParamsUpdate() = 0;

    /// Sets all parameters to their defaults. During a load, `ParamsUpdate` follows when the job holds parameters.
    virtual void ResetParams() = 0;

    /// Starts the service. Called in the disabled state only; a start may follow a start that has succeeded, when the
    /// registration of the result handler after it has failed. A `Zu::Exception` becomes a problem with its text and
    /// the status `ProtocolStatus::FailedToStart`, and reaches the caller; after another exception the status stays
    /// `ProtocolStatus::Starting`. After any exception the service counts as disabled, and the host calls again later:
    /// leave nothing behind that keeps a later start from succeeding.
    virtual void Start() = 0;

    /// Stops the service. Called in the enabled state only. It must not wait for the end of an operation that this
    /// protocol has begun: a job load stops the protocol on the worker that carries the operation out. A
    /// `Zu::Exception` becomes a problem with its text and the status `ProtocolStatus::FailedToStop`, and reaches the
    /// caller. After any exception the service counts as enabled, and `Stop` may be called again. The instance does not
    /// call `Stop` when it is destroyed: the protocol's destructor stops what runs.
    virtual void Stop() = 0;

    // The module does not call these two.
    virtual void BeginUpdateParams(char const* key) = 0;
    virtual void EndUpdateParams() = 0;

    /// The parameters. Called on configuration threads; must not block. Between
    /// `IControlInstance::BeginUpdateParameters` and `EndUpdateParameters` the caller writes into the record, which has
    /// no lock: other threads of the protocol use copies that `Start` and `ParamsUpdate` take. Throws
    /// `Zu::Status::NOT_FOUND`, no text, when there are none.
    virtual Zu::Params::Group& Params() const = 0;

    /// The version under which a job keeps the parameters: a load refuses parameters of another one. Called on
    /// configuration threads; must neither block nor throw.
    virtual char const* ParamsVersion() const = 0;

    // The three internal events. Any thread may add, remove and notify, also at the same time: the lists are guarded,
    // and no lock is held while handlers run. A handler that is removed during a notification is not called any more;
    // `Remove...` does not wait for a call that has begun. A handler that is added during a notification is called from
    // the next one on. The instance adds its handlers when it is constructed and removes them in its destructor, which
    // waits for its own running handlers.
    //
    // The protocol itself calls `Notify...`, on a thread of its choice. The handlers run on that thread in order of
    // addition and may block: they call the host, resources and REST subscribers, which may call back into the
    // protocol. The caller holds no lock that an operation of this interface takes. An exception of a handler leaves
    // `Notify...`, and later handlers are not called. `notify` says whether the job counts as modified.
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

    /// Takes over an output map that a client, a job load or a reset has changed. Called on configuration threads with
    /// no lock of the map held; may block. Its exceptions reach the client or fail the load; the map stays changed.
    /// Throws `Zu::Status::NOT_SUPPORTED`, no text, where a change from outside is not supported.
    virtual void OutputsUpdate() = 0;

    // The next four are called on configuration threads and must not block. The result of a `Has...` never changes
    // after the construction of the protocol. The two others throw `Zu::Status::NOT_FOUND`, no text, when there is no
    // such object.
    virtual bool HasProtocolOutput() const = 0;
    virtual IProtocolOutput& Outputs() const = 0;
    virtual bool HasOutputsActionTarget() const = 0;
    virtual IControlActionTarget& OutputsActionTarget() const = 0;

    /// Takes a batch of result sets, a `wArrayList*` that is valid for the call: take a reference to a set to keep it.
    /// Called on the thread "CtrlScnRstDisp" of this protocol while its result handler is registered. It must not
    /// block, in particular not for a client: sets gather without a bound meanwhile. It must not call
    /// `UpdateConnectedClientCount`, the two operations below, or anything that waits for those. An exception is logged
    /// and ends the delivery of results until the service is started anew.
    virtual void ProcessResultSets(void* resultSets) = 0;

    // The next two are called on configuration threads: the first by `IControlInstance::Enable` after a successful
    // `Start`, the second before `Stop`. The second call is omitted while a problem of a start or stop is on record:
    // then the handler stays registered. `results` outlives the protocol. The second waits for a batch in progress:
    // hold no lock that `ProcessResultSets` takes. When one of them throws, the state of the service stays as it was,
    // and no problem is recorded.
    virtual void RegisterControlScanResultsHandler(IControlScanResults& results) = 0;
    virtual void DeregisterControlScanResultsHandler(IControlScanResults& results) = 0;

    /// The protocol's own actions, or null when it has none. Called on configuration threads for each request; must not
    /// block.
    virtual IControlActionTarget* ActionTarget() = 0;

    /// Takes over a register assembly that a client or a job load has changed. Called on configuration threads with no
    /// lock of the assembly held; may block. `id` is never null. Its exceptions reach the client or fail the load; the
    /// assembly stays changed. Throws `Zu::Status::NOT_SUPPORTED`, no text, where a change from outside is not
    /// supported.
    virtual void RegisterAssemblyUpdate(char const* id) = 0;

    // The next six are called on configuration threads and must not block; the caller of `RegisterAssembly` may hold
    // the lock of an assembly. The set of assemblies never changes after the construction of the protocol. Without
    // assemblies `RegisterAssemblyActionTarget`, `RegisterAssembly` and `RegisterAssemblyList` throw
    // `Zu::Status::NOT_FOUND`, no text; the first two also throw it, with a text, for an unknown `id`, and
    // `Zu::Status::BAD_ARGUMENT` for null.
    virtual bool HasRegisterAssemblyActionTarget() const = 0;
    virtual IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    virtual IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;

    /// Sets all register assemblies to the content of a new configuration. Called on configuration threads by a reset,
    /// also the one at the beginning of a job load. The instance does not tell the fan-out: the protocol calls
    /// `IControlScanResults::UpdateOutputMap` itself while it is registered.
    virtual void ConfigureDefaultRegisterAssembly() = 0;

    /// The data sources that the protocol sends. Called on configuration threads after each `OutputsUpdate` and
    /// `RegisterAssemblyUpdate` to tell the fan-out. May wait for the lock of the map or of the assemblies.
    virtual std::vector<std::string> DataSourceList() const = 0;

    // The next three are called on the host's thread that starts or stops the scan or restores the factory settings,
    // for enabled and disabled services, in the order of the type names. The host may hold its lock for these
    // operations: do not call or await one of them here. They must not block. An exception ends the round: the services
    // after this one are not notified, and the exception counts as a fault of the operation, a `Zu::Exception` too.
    virtual void OnStartScan() = 0;
    virtual void OnStopScan() = 0;
    virtual void OnFactoryRestore() = 0;

    /// Tells the fan-out how many clients the protocol has; it delivers no results while there are none. The protocol
    /// itself calls this, on any thread but that of `ProcessResultSets`. Does nothing while no result handler is
    /// registered. It may wait for a batch in progress: the caller holds no lock that `ProcessResultSets` takes.
    virtual void UpdateConnectedClientCount(uint64 count) = 0;

    // The protocol itself calls the next two, on any thread. They do not block.

    /// How the last command ended; `CommandStatusNone` before the first end.
    virtual ControlRegisterCommandStatus CompletedOperationStatus() const = 0;

    /// The sensor's inputs and outputs, owned by the module. Throws `Zu::Status::NOT_FOUND`, no text, where the system
    /// has none.
    virtual IControlHardwareManager& HardwareManager() = 0;

    // The protocol's own document. `domain` is always `ZuCommon::PersistDomain::PROTOCOL`: the module keeps the rest of
    // the configuration itself. Called on configuration threads, one at a time. They may block; the whole load or save
    // waits. `document` belongs to the caller. The first and the third get null and fill it; null, {} and [] are not
    // written, and the stored document then stays. The second is called only when the stored document has content, and
    // must check it: it may be of another version or edited by hand. An exception is logged and fails the load or save
    // of this service; those of the other services continue.
    virtual void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
    virtual void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) = 0;
    virtual void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
};

} // namespace ZuControl::ControlProtocol
