#include "ZuControl/Protocol/ControlResourceBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/ControlInstance.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace ZuControl::Protocol
{

using State = IControlManager::PersistenceLoadOpState;

ControlResourceBase::ControlResourceBase(IControlManager& usedManager) : controlManager(usedManager)
{
    loadEventId = controlManager.AddPersistenceLoadEventHandler(
        Bind(std::function<void(State)>([this](State state) { OnPersistenceLoadEvent(state); })));
}

ControlResourceBase::~ControlResourceBase()
{
    EndCallbacks();
    ZU_GUARD_DESTRUCTOR([this] { controlManager.RemovePersistenceLoadEventHandler(loadEventId); });
}

void ControlResourceBase::OnPersistenceLoadEvent(State state)
{
    if (state != State::Begin)
    {
        suspended.store(0, std::memory_order_relaxed);
        return; // the count stands until the next load
    }
    suppressedCount.store(0, std::memory_order_relaxed);
    suspended.store(1, std::memory_order_relaxed);
}

uint32 ControlResourceBase::SuppressedCount() const
{
    return suppressedCount.load(std::memory_order_relaxed);
}

IControlInstance& ControlResourceBase::ResolveToInstance(std::string const& name)
{
    return controlManager.GetInstance(name);
}

std::string const& ControlResourceBase::RequireKey(ZuRest::RequestInfo const& request, char const* key,
                                                   char const* message)
{
    std::string const* const value = request.FindKey(key);
    if (value != nullptr)
    {
        return *value;
    }
    if (message == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", message);
}

std::vector<ControlActionInfo> ControlResourceBase::ActionList(IControlInstance const& instance,
                                                               IControlActionTarget const& target)
{
    return CallProtocol(instance, "ListActions", [&] { return target.ListActions(); });
}

std::shared_ptr<Zu::Params::Group> ControlResourceBase::ActionParams(IControlInstance const& instance,
                                                                     IControlActionTarget const& target,
                                                                     std::string const& command)
{
    std::shared_ptr<Zu::Params::Group> params =
        CallProtocol(instance, "GetActionParams", [&] { return target.GetActionParams(command); });
    if (params == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return params;
}

std::shared_ptr<Zu::Params::Group> ControlResourceBase::InvokeAction(IControlInstance const& instance,
                                                                     IControlActionTarget& target,
                                                                     std::string const& command,
                                                                     Zu::Params::Group const& params)
{
    return CallProtocol(instance, "InvokeAction", [&] { return target.InvokeAction(command, params); });
}

nlohmann::json ControlResourceBase::ResultToJson(Zu::Params::Group const* result, ZuRest::RequestInfo const& request)
{
    return result == nullptr ? nlohmann::json() : NodeToJson(*result, request);
}

void ControlResourceBase::AppendSchema(Zu::Properties::JsonSerializer serializer, Zu::Properties::Structure& structure,
                                       nlohmann::json& document)
{
    document["_schema"] = serializer.SerializeSchema(structure);
}

void ControlResourceBase::MakeRegisterAssemblyList(char const* routeTemplate, char const* key,
                                                   std::string const& protocol,
                                                   std::vector<std::string> const& assemblies,
                                                   ZuRest::ResponseInfo& response)
{
    for (std::string const& assembly : assemblies)
    {
        response.Embed(key, ZuRest::Path::Format(routeTemplate, {protocol, assembly}), true, nullptr);
    }
}

void ControlResourceBase::ResourceEventHandler(std::string path)
{
    if (suspended.load(std::memory_order_relaxed) != 0)
    {
        suppressedCount.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, path);
}

ProtocolFaults* ControlResourceBase::FaultsOf(IControlInstance const& instance)
{
    auto const* const own = dynamic_cast<ControlInstance const*>(&instance);
    return own != nullptr ? &own->Faults() : nullptr;
}

void ControlResourceBase::EndCallbacks() noexcept
{
    callbacks.clear();
}

ActionProperties::ActionProperties(std::string const& actionId, Zu::Params::Group& parameters)
    : Structure(true), id(actionId)
{
    Register("id", id);
    Register("parameters", parameters);
}

ActionProperties::~ActionProperties() = default;

std::string SubjectOfCommand(ZuRest::RequestInfo const& request)
{
    std::string path = request.path;
    if (request.FindKey("command") != nullptr)
    {
        path.resize(path.rfind('/'));
    }
    return path.substr(0, path.rfind('/'));
}

std::string const& RouteKey(ZuRest::RequestInfo const& request, char const* key)
{
    std::string const* const value = request.FindKey(key);
    if (value == nullptr)
    {
        throw std::out_of_range("invalid map<K, T> key");
    }
    return *value;
}

} // namespace ZuControl::Protocol
