#include "ZuControl/Protocol/ControlActionResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using ZuRest::Path;

ControlActionResource::ControlActionResource(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
}

ControlActionResource::~ControlActionResource()
{
    EndCallbacks();
}

ZuRest::ICallableResource* ControlActionResource::CallableProvider()
{
    return this;
}

nlohmann::json ControlActionResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    std::string const* const command = request.FindKey("command");
    return command == nullptr ? ReadAll(request, response) : ReadOne(request, *command);
}

nlohmann::json ControlActionResource::Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body)
{
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol"));
    IControlActionTarget& target = ActionTarget(instance);
    std::string const& command = RequireKey(request, "command");
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, target, command);
    NodeFromJson(*params, body);
    if (body.is_object() && body.contains("parameters"))
    {
        NodeFromJson(*params, body.at("parameters"));
    }
    return ResultToJson(InvokeAction(instance, target, command, *params).get(), request);
}

nlohmann::json ControlActionResource::ReadAll(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    std::string const& name = RequireKey(request, "protocol");
    IControlInstance& instance = ResolveToInstance(name);
    IControlActionTarget const* const target = instance.ActionTarget();
    if (target == nullptr)
    {
        return nullptr;
    }
    for (ControlActionInfo const& action : ActionList(instance, *target))
    {
        response.Embed("item", Path::Format("/controls/:protocol/commands/:command", {name, action.Id()}), true,
                       nullptr);
    }
    return nullptr;
}

nlohmann::json ControlActionResource::ReadOne(ZuRest::RequestInfo const& request, std::string const& command)
{
    IControlInstance& instance = ResolveToInstance(RequireKey(request, "protocol"));
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, ActionTarget(instance), command);
    return PartToJson(ActionProperties(command, *params), request);
}

IControlActionTarget& ControlActionResource::ActionTarget(IControlInstance& instance)
{
    IControlActionTarget* const target = instance.ActionTarget();
    if (target == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return *target;
}

} // namespace ZuControl::Protocol
