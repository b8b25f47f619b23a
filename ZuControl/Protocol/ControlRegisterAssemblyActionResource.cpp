#include "ZuControl/Protocol/ControlRegisterAssemblyActionResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Protocol/ActionProperties.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using ZuRest::Path;

ControlRegisterAssemblyActionResource::ControlRegisterAssemblyActionResource(IControlManager& usedManager)
    : ControlResourceBase(usedManager)
{
}

ControlRegisterAssemblyActionResource::~ControlRegisterAssemblyActionResource()
{
    EndCallbacks();
}

ZuRest::ICallableResource* ControlRegisterAssemblyActionResource::CallableProvider()
{
    return this;
}

nlohmann::json ControlRegisterAssemblyActionResource::Document(ZuRest::RequestInfo const& request,
                                                               ZuRest::ResponseInfo& response)
{
    std::string name;
    std::string id;
    ParseTokensFromPath(request, name, id);
    std::string const* const command = request.FindKey("command");
    IControlInstance const& instance = ResolveToInstance(name);
    IControlActionTarget const& target = ActionTarget(instance, id);
    return command == nullptr ? ReadAll(instance, target, response, name, id)
                              : ReadOne(instance, target, request, *command);
}

nlohmann::json ControlRegisterAssemblyActionResource::Invoke(ZuRest::RequestInfo const& request,
                                                             nlohmann::json const& body)
{
    std::string name;
    std::string id;
    ParseTokensFromPath(request, name, id);
    std::string const& command = RequireKey(request, "command", "Request is missing command");
    IControlInstance& instance = ResolveToInstance(name);
    IControlActionTarget& target = ActionTarget(instance, id);
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, target, command);
    NodeFromJson(*params, body);

    instance.BeginUpdateRegisterAssembly();
    std::shared_ptr<Zu::Params::Group> result;
    try
    {
        result = InvokeAction(instance, target, command, *params);
        instance.RegisterAssemblyUpdate(id.c_str());
    }
    catch (...)
    {
        instance.EndUpdateRegisterAssembly(id);
        ZU_THROW_NESTED("%s", Zu::CaughtText().c_str());
    }
    instance.EndUpdateRegisterAssembly(id);
    return ResultToJson(result.get(), request);
}

void ControlRegisterAssemblyActionResource::ParseTokensFromPath(ZuRest::RequestInfo const& request, std::string& name,
                                                                std::string& id)
{
    name = RequireKey(request, "protocol", "Request is missing service name");
    id = RequireKey(request, "registerAssembly", "Request is missing assembly id");
}

IControlActionTarget& ControlRegisterAssemblyActionResource::ActionTarget(IControlInstance const& instance,
                                                                          std::string const& id)
{
    if (!instance.HasRegisterAssemblyActionTarget())
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return instance.RegisterAssemblyActionTarget(id.c_str());
}

nlohmann::json ControlRegisterAssemblyActionResource::ReadAll(IControlInstance const& instance,
                                                              IControlActionTarget const& target,
                                                              ZuRest::ResponseInfo& response, std::string const& name,
                                                              std::string const& id)
{
    for (ControlActionInfo const& action : ActionList(instance, target))
    {
        response.Embed("item",
                       Path::Format("/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                                    {name, id, action.Id()}),
                       true, nullptr);
    }
    return nullptr;
}

nlohmann::json ControlRegisterAssemblyActionResource::ReadOne(IControlInstance const& instance,
                                                              IControlActionTarget const& target,
                                                              ZuRest::RequestInfo const& request,
                                                              std::string const& command)
{
    std::shared_ptr<Zu::Params::Group> const params = ActionParams(instance, target, command);
    return PartToJson(RegisterAssemblyActionProperties(command, *params), request);
}

} // namespace ZuControl::Protocol
