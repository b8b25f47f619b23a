#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuControl/Control/ControlActionInfo.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Control/ProtocolFaults.h"
#include "ZuControl/Export.h"
#include "ZuRest/DocumentResourceBase.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace Zu::Properties
{
class JsonSerializer;
class Structure;
} // namespace Zu::Properties

namespace ZuRest
{
class ResponseInfo;
}

namespace ZuControl
{

class IControlActionTarget;
class IControlInstance;

namespace Protocol
{

/// What the resources of the `/controls` tree have in common: the protocols, which each request looks up anew, and the
/// notifications, which pause while a job is loaded.
///
/// Threads: requests come on those of the REST service, notifications go out on the thread of the change, one at a time for
/// each resource. A handler of a notification must not wait for a change to end.
class ZUCONTROL_INTERNAL_API ControlResourceBase : public ZuRest::DocumentResourceBase
{
public:
    /// `usedManager` outlives the resource.
    explicit ControlResourceBase(IControlManager& usedManager);
    ~ControlResourceBase() override;

    /// Holds notifications back from the beginning of a load to its end; what is held back is counted and never sent.
    virtual void OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state);

    /// How many notifications the present load, or else the last one, has held back.
    uint32 SuppressedCount() const;

protected:
    /// The instance of a type. Throws what the manager throws for one that there is not.
    IControlInstance& ResolveToInstance(std::string const& name);

    /// The value of a key of the route; -997 with `message` when the request has none, and without a text for null.
    static std::string const& RequireKey(ZuRest::RequestInfo const& request, char const* key,
                                         char const* message = nullptr);

    /// Runs `step`, which calls `operation` of something that the protocol of `instance` has handed out. A fault counts as one of
    /// the protocol; see ProtocolFaults::Call.
    template <typename Step>
    static decltype(auto) CallProtocol(IControlInstance const& instance, char const* operation, Step&& step)
    {
        ProtocolFaults* const faults = FaultsOf(instance);
        return faults != nullptr ? faults->Call(operation, step) : step();
    }

    static std::vector<ControlActionInfo> ActionList(IControlInstance const& instance,
                                                     IControlActionTarget const& target);

    /// A fresh argument record of an action; -996 when the target has none to give.
    static std::shared_ptr<Zu::Params::Group>
    ActionParams(IControlInstance const& instance, IControlActionTarget const& target, std::string const& command);

    static std::shared_ptr<Zu::Params::Group> InvokeAction(IControlInstance const& instance,
                                                           IControlActionTarget& target, std::string const& command,
                                                           Zu::Params::Group const& params);

    /// The document of what an action gave, null for nothing.
    static nlohmann::json ResultToJson(Zu::Params::Group const* result, ZuRest::RequestInfo const& request);

    /// Puts the schema of `structure` under "_schema", in place of what is there.
    static void AppendSchema(Zu::Properties::JsonSerializer serializer, Zu::Properties::Structure& structure,
                             nlohmann::json& document);

    /// Embeds each assembly of `protocol` in the list `key`, in order.
    static void MakeRegisterAssemblyList(char const* routeTemplate, char const* key, std::string const& protocol,
                                         std::vector<std::string> const& assemblies, ZuRest::ResponseInfo& response);

    /// Tells that the document at `path` reads differently now.
    void ResourceEventHandler(std::string path);

    /// What the callbacks of the instances go through.
    Zu::CallbackGate const& Gate() const;

    /// No callback begins any more, and one on another thread has ended. The first thing that the destructor of a derived
    /// class does.
    void EndCallbacks() noexcept;

    IControlManager& controlManager;

private:
    /// Null for an instance that is none of the module's.
    static ProtocolFaults* FaultsOf(IControlInstance const& instance);

    // Relaxed: set by the thread of the load, read by those of the changes; nothing hangs on their order.
    std::atomic<uint32> suspended{0};
    std::atomic<uint32> suppressedCount{0};
    IControlManager::CallbackId loadEventId;
    Zu::CallbackGate gate; // one call at a time: what fires the notifications has no lock of its own
};

} // namespace Protocol

} // namespace ZuControl
