#include "ZuControl/Protocol/ControlOutputsResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <functional>
#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using ControlProtocol::ProtocolOutputActionTarget;
using ZuRest::Path;

namespace
{

/// For steps after a failure that the client is to see: a failure of `step` itself is dropped.
template <typename Step>
void RunAndForgetFailure(Step&& step)
{
    try
    {
        std::forward<Step>(step)();
    }
    catch (...)
    {
    }
}

} // namespace

ControlOutputsResource::ControlOutputsResource(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
}

ControlOutputsResource::~ControlOutputsResource()
{
    EndCallbacks();
}

nlohmann::json ControlOutputsResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    std::string const& name = RequireKey(request, "protocol");
    IControlInstance& instance = ResolveToInstance(name);
    bool isLocked = false;
    try
    {
        instance.OutputsMapBeginLock(); // does nothing without a map; `OutputsMap` throws then
        isLocked = true;
        nlohmann::json document = PartToJson(instance.OutputsMap(), request);
        isLocked = false;
        instance.OutputsMapEndLock();
        LinkActions(instance, name, response);
        return document;
    }
    catch (...)
    {
        if (isLocked)
        {
            instance.OutputsMapEndLock();
        }
        ZU_THROW_NESTED("Failed to convert %s output map", name.c_str());
    }
}

void ControlOutputsResource::LinkActions(IControlInstance const& instance, std::string const& name,
                                         ZuRest::ResponseInfo& response)
{
    if (!instance.HasOutputsActionTarget())
    {
        return;
    }
    for (ControlActionInfo const& action : ActionList(instance, instance.OutputsActionTarget()))
    {
        response.Link("zu:command", Path::Format("/controls/:protocol/outputs/commands/:command", {name, action.Id()}),
                      true, nullptr);
    }
}

void ControlOutputsResource::UpdateDocument(ZuRest::RequestInfo const& /*request*/, nlohmann::json const& /*document*/)
{
    ZU_THROW(Zu::Status::NOT_UPDATABLE);
}

ControlOutputsActionResource::ControlOutputsActionResource(IControlManager& usedManager)
    : ControlResourceBase(usedManager)
{
    AddOutputsUpdateEventHandler();
}

ControlOutputsActionResource::~ControlOutputsActionResource()
{
    EndCallbacks();
    RemoveOutputsUpdateEventHandler();
}

ZuRest::ICallableResource* ControlOutputsActionResource::CallableProvider()
{
    return this;
}

nlohmann::json ControlOutputsActionResource::Document(ZuRest::RequestInfo const& request,
                                                      ZuRest::ResponseInfo& response)
{
    std::string const& name = RequireKey(request, "protocol");
    std::string const* const command = request.FindKey("command");
    IControlInstance const& instance = ResolveToInstance(name);
    IControlActionTarget const& target = ActionTarget(instance);
    return command == nullptr ? ReadAll(instance, target, response, name)
                              : ReadOne(instance, target, request, *command);
}

nlohmann::json ControlOutputsActionResource::Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body)
{
    std::string const& name = RequireKey(request, "protocol", "Request is missing service name");
    std::string const& command = RequireKey(request, "command", "Request is missing command");
    IControlInstance& instance = ResolveToInstance(name);
    IControlActionTarget& target = ActionTarget(instance);
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, target, command);
    NodeFromJson(*params, body);

    instance.BeginUpdateOutputsMap();
    bool const isWhole = RunAction(instance, target, command, *params);
    TellOfUpdate(instance);
    if (!isWhole)
    {
        ZU_LOG_USER_WARNING("One or more data sources could not be added to output map.");
        ZU_LOG_WARNING("One or more data sources could not be added to output map.");
    }
    return nullptr;
}

nlohmann::json ControlOutputsActionResource::ReadAll(IControlInstance const& instance,
                                                     IControlActionTarget const& target, ZuRest::ResponseInfo& response,
                                                     std::string const& name)
{
    for (ControlActionInfo const& action : ActionList(instance, target))
    {
        response.Embed("item", Path::Format("/controls/:protocol/outputs/commands/:command", {name, action.Id()}), true,
                       nullptr);
    }
    return nullptr;
}

nlohmann::json ControlOutputsActionResource::ReadOne(IControlInstance const& instance,
                                                     IControlActionTarget const& target,
                                                     ZuRest::RequestInfo const& request, std::string const& command)
{
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, target, command);
    return PartToJson(OutputsActionProperties(command, *params), request);
}

std::string ControlOutputsActionResource::SubjectPath(ZuRest::RequestInfo const& request) const
{
    return SubjectOfCommand(request);
}

void ControlOutputsActionResource::RethrowRefusal()
{
    ZU_THROW_NESTED("Output connection map action error");
}

IControlActionTarget& ControlOutputsActionResource::ActionTarget(IControlInstance const& instance)
{
    if (!instance.HasOutputsActionTarget())
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return instance.OutputsActionTarget();
}

/// Returns false when "addAll" fails. Any other failure closes the bracket and leaves as an exception.
bool ControlOutputsActionResource::RunAction(IControlInstance& instance, IControlActionTarget& target,
                                             std::string const& command, Zu::Params::Group const& params)
{
    try
    {
        InvokeAction(instance, target, command, params);
        return true;
    }
    catch (...)
    {
        if (command == ProtocolOutputActionTarget::PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL)
        {
            return false;
        }
        RunAndForgetFailure([&instance] { instance.OutputsUpdate(); });
        RunAndForgetFailure([&instance] { instance.EndUpdateOutputsMap(); });
        RethrowRefusal();
    }
}

void ControlOutputsActionResource::TellOfUpdate(IControlInstance& instance)
{
    try
    {
        instance.OutputsUpdate();
    }
    catch (...)
    {
        RunAndForgetFailure([&instance] { instance.EndUpdateOutputsMap(); });
        ZU_THROW_NESTED("Failed to notify control service of an update to the output map.");
    }
    try
    {
        instance.EndUpdateOutputsMap();
    }
    catch (...)
    {
        ZU_THROW_NESTED("Failed to send output map update notification");
    }
}

void ControlOutputsActionResource::AddOutputsUpdateEventHandler()
{
    for (std::string const& name : controlManager.List())
    {
        SetupEvents(ResolveToInstance(name));
    }
}

void ControlOutputsActionResource::SetupEvents(IControlInstance& instance)
{
    outputsUpdateEventIds[instance.TypeName()] = instance.AddOutputsUpdatedEventHandler(
        Bind(std::function<void(std::string, bool)>([this](std::string name, bool notify) {
            ControlOutputsActionResourceEventHandler(std::move(name), notify);
        })));
}

void ControlOutputsActionResource::RemoveOutputsUpdateEventHandler() noexcept
{
    try
    {
        for (auto const& [name, id] : outputsUpdateEventIds)
        {
            ResolveToInstance(name).RemoveOutputsUpdatedEventHandler(id);
        }
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Exception thrown while removing outputs map update event handlers");
    }
}

void ControlOutputsActionResource::ControlOutputsActionResourceEventHandler(std::string name, bool /*notify*/)
{
    ResourceEventHandler(Path::Format("/controls/:protocol/outputs", {name}));
}

} // namespace ZuControl::Protocol
