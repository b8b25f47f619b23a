#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"
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
/// Ownership: the manager owns the instance. References and pointers that operations return stay the instance's or the
/// protocol's and are valid for as long as the instance, unless an operation says otherwise.
///
/// Threads: any thread may call, except that the host makes changes one at a time: `Enable`, `ResetInstance`,
/// everything between a `Begin...` and its `End...`, and loads and saves. The instance holds no lock of its own during
/// a call. An operation that calls the protocol blocks for as long as the protocol's operation does; see IProtocol for
/// its contract.
///
/// Exceptions: exceptions of the protocol reach the caller. Where the protocol lacks outputs or assemblies, an
/// operation on them throws `Zu::Status::NOT_FOUND` with no text, but the locks and `RegisterAssemblyUpdate` do
/// nothing.
class ZUCONTROL_API IControlInstance
{
public:
    /// The data that a reset sets to its defaults.
    enum DataToReset : uint8
    {
        DataToResetParams = 0,
        DataToResetOutputs = 1,
        DataToResetRegisterAssemblies = 2,
        DataToResetAll = 3
    };

    IControlInstance() noexcept;
    virtual ~IControlInstance(); // first of the slots that others call through: never move one

    // The next three give the same values for the life of the instance. The first two neither block nor throw; `Info`
    // stays the catalogue's.
    virtual ControlInfo const& Info() const = 0;
    virtual char const* TypeName() const = 0;
    virtual ZuEthernetProtocol EthernetProtocolId() const = 0;

    /// Starts the protocol and then registers its result handler, or removes the handler and then stops the protocol;
    /// does nothing when `IsEnabled` has this value already. May block for as long as the protocol starts or stops. A
    /// `Zu::Exception` out of `Start` or `Stop` becomes a problem that the user sees. It reaches the caller, as every
    /// other exception does; `IsEnabled` then stays as it was, also when the protocol has started and the registration
    /// has failed. The handler stays registered when a problem of an earlier start or stop is on record.
    virtual void Enable(bool value) = 0;

    /// Whether the protocol was last enabled. Neither blocks nor throws.
    virtual bool IsEnabled() const = 0;

    // The three update events. Any thread may add and remove handlers, also while an event fires. The handlers run in
    // order of addition: in an `End...` on the thread that calls it, with the update gate held, and in a notification
    // of the protocol on the protocol's thread. A handler must not wait for another change of the configuration. An
    // exception of a handler reaches the caller of the `End...` or the protocol, and later handlers are not called.
    // `Remove...` does not wait for a call that has begun.

    /// Handlers get the type name, and whether the job counts as modified.
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

    // Each `Begin...` opens a bracket of the host's update gate and blocks while another thread has one open; in the
    // host of this project it throws `Zu::Status::BUSY` after 30 seconds. Each `End...` fires the update event, whether
    // or not anything has changed, and then closes the bracket. An exception of a handler leaves the bracket open: the
    // host closes it at the end of the request. Every `Begin...` that has returned needs its `End...`, also when the
    // change fails.

    /// Gives the parameter record to write into until `EndUpdateParameters`. When the protocol has none, this throws
    /// `Zu::Status::NOT_FOUND` and leaves the bracket open.
    virtual Zu::Params::Group& BeginUpdateParameters() = 0;
    virtual void EndUpdateParameters() = 0;
    virtual void BeginUpdateOutputsMap() = 0;
    virtual void EndUpdateOutputsMap() = 0;
    virtual void BeginUpdateRegisterAssembly() = 0;
    virtual void EndUpdateRegisterAssembly(std::string const& id) = 0;

    // The next two neither block nor throw. Readers and updates of the record must exclude each other: use
    // ControlMetrics.
    virtual ZuCommon::IMetricsKeeper& MetricsKeeper() = 0;
    virtual ZuCommon::IMetricsSource& MetricsSource() = 0;

    /// The parameters to read. They may change during an update bracket of another thread.
    virtual Zu::Params::Group const& Params() const = 0;
    virtual char const* ParamsVersion() const = 0;

    /// Makes the protocol take over changed parameters; call it inside the update bracket. An exception leaves the
    /// changed values in the record; the caller closes the bracket.
    virtual void ParamsUpdate() = 0;

    virtual bool HasProtocolOutput() const = 0;

    // `OutputsMapBeginLock` waits for the map's lock and holds it until `OutputsMapEndLock` on the same thread. Pairs
    // may nest, but an inner end forbids `OutputsMap` until the next begin. `OutputsMap` throws
    // `Zu::Status::WRONG_STATE`, no text, outside of the pair.
    virtual void OutputsMapBeginLock() = 0;
    virtual void OutputsMapEndLock() = 0;
    virtual Zu::Params::Group const& OutputsMap() const = 0;
    virtual bool HasOutputsActionTarget() const = 0;
    virtual IControlActionTarget& OutputsActionTarget() const = 0;

    /// Makes the protocol take over a changed output map, then tells the fan-out which data sources the protocol wants.
    /// Call it inside the update bracket, without the map's lock. When the protocol throws, the fan-out keeps the
    /// sources that it has.
    virtual void OutputsUpdate() = 0;

    // The next six only read; the set of assemblies never changes. The operations that return a reference throw
    // `Zu::Status::NOT_FOUND` for an unknown `id` and `Zu::Status::BAD_ARGUMENT` for null, each with a text.
    virtual bool HasRegisterAssemblyActionTarget() const = 0;
    virtual IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    virtual ControlProtocol::IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;

    // As the pair of the output map, for one assembly. Outside of it the assembly gives out none of its lists.
    virtual void RegisterAssemblyBeginLock(char const* id) = 0;
    virtual void RegisterAssemblyEndLock(char const* id) = 0;

    /// As `OutputsUpdate`, for one assembly.
    virtual void RegisterAssemblyUpdate(char const* id) = 0;

    /// Disables the protocol unless `keepEnabled`, then sets the data to its defaults: parameters, outputs, assemblies,
    /// in this order. Fires no event and opens no bracket. An exception ends the reset; the data that is reset by then
    /// stays so.
    virtual void ResetInstance(bool keepEnabled, DataToReset data) = 0;

    /// The protocol's own actions; null when it has none.
    virtual IControlActionTarget* ActionTarget() = 0;

    // The manager calls these on the host's thread that fires the event, for enabled and disabled protocols. Any
    // exception, a `Zu::Exception` too, counts as a fault of the protocol and reaches the host; the instances after
    // this one are then not notified.
    virtual void OnStartScan() = 0;
    virtual void OnStopScan() = 0;
    virtual void OnFactoryRestore() = 0;

    /// The status that the instance has last set or the protocol has last reported. Neither blocks nor throws.
    virtual ProtocolStatus GetProtocolStatus() = 0;

    // The protocol's own document. PersistControl calls these with `ZuCommon::PersistDomain::PROTOCOL` alone, on the
    // host's thread that loads or saves, one at a time. `document` stays the caller's.
    virtual void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
    virtual void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) = 0;
    virtual void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) = 0;
};

} // namespace ZuControl
