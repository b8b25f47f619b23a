#include "ZuControl/Protocol/ControlResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>

ZU_INSTANTIATE_ENUM_VALUE(ZuControl::ProtocolStatus);

namespace ZuControl::Protocol
{

using ZuRest::Path;

namespace
{

constexpr char const* ENABLED = "enabled";
constexpr char const* PARAMETERS = "parameters";

void Fill(ControlProperties& properties, IControlInstance& instance)
{
    properties.enabled.Set(instance.IsEnabled());
    ProtocolStatus const status = instance.GetProtocolStatus();
    if (!properties.KnowsStatus(status)) // a protocol may report any number
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "Undefined protocol status:%u", static_cast<uint32>(status));
    }
    properties.status.Set(status);
    properties.id.Set(instance.Info().TypeName());
    properties.displayName.Set(instance.Info().DisplayName());
}

/// The cast is valid: the instance returns the record as constant, but the record itself is no constant object.
Zu::Params::Group& ParametersOf(IControlInstance const& instance)
{
    return const_cast<Zu::Params::Group&>(instance.Params());
}

bool Names(nlohmann::json const& document, char const* key)
{
    return document.is_object() && document.contains(key);
}

/// Starts or stops the service. If that is refused and the request has set parameters before, the refusal says that they
/// stay.
void EnableWith(IControlInstance& instance, bool isEnabled, bool hasParameters)
{
    try
    {
        instance.Enable(isEnabled);
    }
    catch (Zu::Exception const& exception)
    {
        if (!hasParameters)
        {
            throw;
        }
        ZU_THROW_NESTED("%s. The parameters of the request are kept.", exception.what());
    }
}

} // namespace

ControlProperties::ControlProperties() : Group("")
{
    Register("enabled", "Enabled", enabled);
    Register("status", "Status", status).EnableReadOnly().readOnly.Set(true);
    Register("id", "Id", id);
    Register("displayName", "Name", displayName);
    status.AddOption(ProtocolStatus::Running, "Running")
        .AddOption(ProtocolStatus::Stopped, "Stopped")
        .AddOption(ProtocolStatus::Starting, "Starting")
        .AddOption(ProtocolStatus::Stopping, "Stopping")
        .AddOption(ProtocolStatus::FailedToStart, "Failed To Start")
        .AddOption(ProtocolStatus::FailedToStop, "Failed To Stop");
}

ControlProperties::~ControlProperties() = default;

void ControlProperties::ShowParameters(Zu::Params::Group& parameters)
{
    Register("parameters", "", parameters);
}

bool ControlProperties::KnowsStatus(ProtocolStatus candidate) const
{
    auto const& known = status.enumValues.Get();
    return std::find(known.begin(), known.end(), candidate) != known.end();
}

ControlResource::ControlResource(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
    RegisterParamUpdateEvent();
}

ControlResource::~ControlResource()
{
    EndCallbacks();
    ZU_GUARD_DESTRUCTOR([this] { RemoveParamUpdateEvent(); });
}

nlohmann::json ControlResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    std::string const* const name = request.FindKey("protocol");
    return name == nullptr ? ReadAll(response) : ReadOne(request, response, *name);
}

void ControlResource::UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document)
{
    ControlProperties properties;
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol", "Request is missing service name"));
    Fill(properties, instance);
    bool const namesEnabled = Names(document, ENABLED);
    bool const namesParameters = Names(document, PARAMETERS);

    Zu::Params::Group& parameters = instance.BeginUpdateParameters();
    try
    {
        if (namesEnabled)
        {
            ValidateJsonFromNode(properties, document);
        }
        if (namesParameters)
        {
            ValidateJsonFromNode(parameters, document.at(PARAMETERS));
        }
    }
    catch (...)
    {
        instance.EndUpdateParameters();
        ZU_THROW_NESTED("%s", Zu::CaughtText().c_str());
    }

    if (namesEnabled)
    {
        NodeFromJson(properties, document);
    }
    if (namesParameters) // before the start, so that a protocol that is enabled now starts with them
    {
        NodeFromJson(parameters, document.at(PARAMETERS));
        instance.ParamsUpdate();
    }
    if (namesEnabled && properties.enabled.Get() != instance.IsEnabled())
    {
        EnableWith(instance, properties.enabled.Get(), namesParameters);
    }
    instance.EndUpdateParameters();
}

void ControlResource::OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state)
{
    ControlResourceBase::OnPersistenceLoadEvent(state);
    if (state == IControlManager::PersistenceLoadOpState::End)
    {
        NotificationEvent().Fire(*this, ZuRest::EventType::TREE_CHANGED, "/controls");
        ZU_LOG_INFO("Notifications saved in ControlResource: %u", SuppressedCount());
    }
}

nlohmann::json ControlResource::ReadAll(ZuRest::ResponseInfo& response)
{
    for (std::string const& name : controlManager.List())
    {
        response.Embed("item", Path::Format("/controls/:protocol", {name}), true, nullptr);
    }
    return nlohmann::json::object();
}

nlohmann::json ControlResource::ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response,
                                        std::string const& name)
{
    ControlProperties properties;
    IControlInstance& instance = ResolveToInstance(name);
    if (instance.HasProtocolOutput())
    {
        response.Embed("zu:datasources", Path::Format("/controls/:protocol/outputs", {name}), false, nullptr);
    }
    if (instance.HasRegisterAssemblyGroup())
    {
        MakeRegisterAssemblyList("/controls/:protocol/registerAssemblies/:registerAssembly", "zu:registerAssembly",
                                 name, instance.RegisterAssemblyList(), response);
    }
    LinkActions(instance, name, response);
    Fill(properties, instance);
    properties.ShowParameters(ParametersOf(instance));
    return PartToJson(properties, request);
}

/// Links the protocol's actions, in the order in which clients show them.
void ControlResource::LinkActions(IControlInstance& instance, std::string const& name, ZuRest::ResponseInfo& response)
{
    IControlActionTarget const* const target = instance.ActionTarget();
    if (target == nullptr)
    {
        return;
    }
    for (ControlActionInfo const& action : ActionList(instance, *target))
    {
        response.Link("zu:command", Path::Format("/controls/:protocol/commands/:command", {name, action.Id()}), true,
                      nullptr);
    }
}

void ControlResource::RegisterParamUpdateEvent()
{
    for (std::string const& name : controlManager.List())
    {
        SetupParamUpdateEvents(ResolveToInstance(name));
    }
}

void ControlResource::SetupParamUpdateEvents(IControlInstance& instance)
{
    // Stores title and sort order in the live record now: later reads run beside each other, and then find both set and
    // store nothing.
    ControlProperties().ShowParameters(ParametersOf(instance));
    paramUpdateEventIds[instance.TypeName()] =
        instance.AddParamsUpdatedEventHandler(Bind(std::function<void(std::string, bool)>(
            [this](std::string name, bool notify) { ParamUpdateEventHandler(std::move(name), notify); })));
}

void ControlResource::RemoveParamUpdateEvent()
{
    for (auto const& [name, id] : paramUpdateEventIds)
    {
        ResolveToInstance(name).RemoveParamsUpdatedEventHandler(id);
    }
}

void ControlResource::ParamUpdateEventHandler(std::string name, bool /*notify*/)
{
    ResourceEventHandler(Path::Format("/controls/:protocol", {name}));
}

} // namespace ZuControl::Protocol
