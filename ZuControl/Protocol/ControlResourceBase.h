#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Signal.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Control/ProtocolFaults.h"
#include "ZuControl/Export.h"
#include "ZuRest/DocumentResourceBase.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <utility>
#include <vector>

namespace Zu::Params
{
class Group;
} // namespace Zu::Params

namespace Zu::Properties
{
class JsonSerializer;
class Structure;
} // namespace Zu::Properties

namespace ZuRest
{
class ResponseInfo;
struct RequestInfo;
} // namespace ZuRest

namespace ZuControl
{

class IControlActionTarget;
class IControlInstance;

namespace Protocol
{

/// The base of the resources of the `/controls` tree: the look-up of the protocol for each request, and the
/// notifications, which pause while a job is loaded.
///
/// Threads: requests come on the workers of the REST service. Notifications are sent on the thread of the change,
/// concurrently if several threads make changes. A handler of a notification must not wait for the end of a change.
class ZUCONTROL_INTERNAL_API ControlResourceBase : public ZuRest::DocumentResourceBase
{
public:
    /// `usedManager` outlives the resource.
    explicit ControlResourceBase(IControlManager& usedManager);
    ~ControlResourceBase() override;

    /// Suppresses and counts notifications from the beginning of a load to its end; they are never sent.
    virtual void OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state);

    /// The number of notifications that the running load, or else the last one, has suppressed.
    uint32 SuppressedCount() const;

protected:
    /// The instance of a type. Throws `Zu::Status::NOT_FOUND` for an unknown type.
    IControlInstance& ResolveToInstance(std::string const& name);

    /// The value of a key of the route. Throws `Zu::Status::BAD_ARGUMENT` when the request has none, with the text
    /// `message`, or without a text when that is null.
    static std::string const& RequireKey(ZuRest::RequestInfo const& request, char const* key,
                                         char const* message = nullptr);

    /// Runs `step`, which calls `operation` of an object of the protocol of `instance`. A fault counts as a fault of
    /// the protocol; see ProtocolFaults::Call.
    template <typename Step>
    static decltype(auto) CallProtocol(IControlInstance const& instance, char const* operation, Step&& step)
    {
        ProtocolFaults* const faults = FaultsOf(instance);
        return faults != nullptr ? faults->Call(operation, step) : step();
    }

    static std::vector<ControlActionInfo> ActionList(IControlInstance const& instance,
                                                     IControlActionTarget const& target);

    /// A new argument record of an action. Throws `Zu::Status::NOT_SUPPORTED` when the target returns null.
    static std::shared_ptr<Zu::Params::Group>
    ActionParams(IControlInstance const& instance, IControlActionTarget const& target, std::string const& command);

    static std::shared_ptr<Zu::Params::Group> InvokeAction(IControlInstance const& instance,
                                                           IControlActionTarget& target, std::string const& command,
                                                           Zu::Params::Group const& params);

    /// The document of an action's result; null for no result.
    static nlohmann::json ResultToJson(Zu::Params::Group const* result, ZuRest::RequestInfo const& request);

    /// Stores the schema of `structure` under "_schema", also when there is such a member.
    static void AppendSchema(Zu::Properties::JsonSerializer serializer, Zu::Properties::Structure& structure,
                             nlohmann::json& document);

    /// Embeds each assembly of `protocol` in the list `key`, in order.
    static void MakeRegisterAssemblyList(char const* routeTemplate, char const* key, std::string const& protocol,
                                         std::vector<std::string> const& assemblies, ZuRest::ResponseInfo& response);

    /// Notifies that the document at `path` has changed, unless a load suppresses it.
    void ResourceEventHandler(std::string path);

    /// Returns a function that calls `callback` until `EndCallbacks`. For callbacks that a derived class gives to the
    /// instances in its constructor.
    template <typename... Args>
    std::function<void(Args...)> Bind(std::function<void(Args...)> callback)
    {
        return callbacks.emplace_back().Bind(std::move(callback));
    }

    /// Ends all callbacks: none begins any more, and those that run on other threads have ended. Every destructor of a
    /// derived class calls this first.
    void EndCallbacks() noexcept;

    IControlManager& controlManager;

private:
    /// Null for an instance of another class than ControlInstance.
    static ProtocolFaults* FaultsOf(IControlInstance const& instance);

    // Relaxed: the thread of the load writes them, the threads of changes read them, and no other data depends on them.
    std::atomic<uint32> suspended{0};
    std::atomic<uint32> suppressedCount{0};
    IControlManager::CallbackId loadEventId;
    std::vector<Zu::Subscription> callbacks;
};

/// The document of one action: its id and its arguments.
struct ZUCONTROL_INTERNAL_API ActionProperties final : public Zu::Properties::Structure
{
    /// `parameters` is not owned and outlives the document.
    ActionProperties(std::string const& actionId, Zu::Params::Group& parameters);
    ~ActionProperties() override;

    Zu::Properties::Value<std::string> id;
};

/// The actions of output maps and of register assemblies have the same document.
using OutputsActionProperties = ActionProperties;
using RegisterAssemblyActionProperties = ActionProperties;

/// The path above "/commands/:command", as the client spells it.
ZUCONTROL_INTERNAL_API std::string SubjectOfCommand(ZuRest::RequestInfo const& request);

/// The value of a key of the route, which stays the request's. Throws std::out_of_range when the request has none, with
/// a text that clients of the outputs rely on.
ZUCONTROL_INTERNAL_API std::string const& RouteKey(ZuRest::RequestInfo const& request, char const* key);

} // namespace Protocol

} // namespace ZuControl
