#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/ControlProtocol/AssemblyLock.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <functional>
#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using ControlProtocol::AssemblyLock;
using ControlProtocol::IProtocolRegisterAssembly;
using ZuRest::Path;

namespace
{

constexpr char const* ASSEMBLY_ROUTE = "/controls/:protocol/registerAssemblies/:registerAssembly";

template <typename Records>
std::vector<Zu::Properties::Node const*> NodesOf(Records const& records)
{
    std::vector<Zu::Properties::Node const*> nodes;
    nodes.reserve(records.size());
    for (auto const& record : records)
    {
        nodes.push_back(record.get());
    }
    return nodes;
}

} // namespace

ControlRegisterAssemblyResource::ControlRegisterAssemblyResource(IControlManager& usedManager)
    : ControlResourceBase(usedManager)
{
    AddRegisterAssemblyUpdateEvent();
}

ControlRegisterAssemblyResource::~ControlRegisterAssemblyResource()
{
    EndCallbacks();
    RemoveRegisterAssemblyUpdateEvent();
}

nlohmann::json ControlRegisterAssemblyResource::Document(ZuRest::RequestInfo const& request,
                                                         ZuRest::ResponseInfo& response)
{
    std::string const& name = RequireKey(request, "protocol");
    std::string const* const id = request.FindKey("registerAssembly");
    return id == nullptr ? ReadAll(response, name) : ReadOne(request, response, name, *id);
}

nlohmann::json ControlRegisterAssemblyResource::ReadAll(ZuRest::ResponseInfo& response, std::string const& name)
{
    IControlInstance const& instance = ResolveToInstanceWithAssemblies(name);
    MakeRegisterAssemblyList(ASSEMBLY_ROUTE, "item", name, instance.RegisterAssemblyList(), response);
    return nlohmann::json::object();
}

nlohmann::json ControlRegisterAssemblyResource::ReadOne(ZuRest::RequestInfo const& request,
                                                        ZuRest::ResponseInfo& response, std::string const& name,
                                                        std::string const& id)
{
    IControlInstance const& instance = ResolveToInstanceWithAssemblies(name);
    IProtocolRegisterAssembly& assembly = instance.RegisterAssembly(id.c_str());
    nlohmann::json document =
        CallProtocol(instance, "IProtocolRegisterAssembly", [&] { return ReadAssembly(assembly, request); });
    if (!instance.HasRegisterAssemblyActionTarget())
    {
        return document;
    }
    for (ControlActionInfo const& action : ActionList(instance, instance.RegisterAssemblyActionTarget(id.c_str())))
    {
        response.Link("zu:command",
                      Path::Format("/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                                   {name, id, action.Id()}),
                      true, nullptr);
    }
    return document;
}

nlohmann::json ControlRegisterAssemblyResource::ReadAssembly(IProtocolRegisterAssembly& assembly,
                                                             ZuRest::RequestInfo const& request)
{
    nlohmann::json document = NodeToJson(assembly.Properties(), request);
    document["attributes"] = PartToJson(assembly.Attributes(), request);
    ReadSupportedBlocks(assembly, document, request);
    ReadAddedBlocks(assembly, document, request);
    return document;
}

IControlInstance& ControlRegisterAssemblyResource::ResolveToInstanceWithAssemblies(std::string const& name)
{
    IControlInstance& instance = ResolveToInstance(name);
    if (!instance.HasRegisterAssemblyGroup())
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return instance;
}

void ControlRegisterAssemblyResource::ReadSupportedBlocks(IProtocolRegisterAssembly& assembly, nlohmann::json& document,
                                                          ZuRest::RequestInfo const& request)
{
    AssemblyLock const lock(assembly);
    document["supportedBlockTypes"] = ListToJson(NodesOf(assembly.SupportedRegisterBlockTypes()), request);
}

void ControlRegisterAssemblyResource::ReadAddedBlocks(IProtocolRegisterAssembly& assembly, nlohmann::json& document,
                                                      ZuRest::RequestInfo const& request)
{
    AssemblyLock const lock(assembly);
    document["blocks"] = ListToJson(NodesOf(assembly.AddedRegisterBlocks()), request);
}

void ControlRegisterAssemblyResource::AddRegisterAssemblyUpdateEvent()
{
    for (std::string const& name : controlManager.List())
    {
        SetupEvents(ResolveToInstance(name));
    }
}

void ControlRegisterAssemblyResource::SetupEvents(IControlInstance& instance)
{
    registerAssemblyUpdateEventIds[instance.TypeName()] = instance.AddRegisterAssemblyUpdatedEventHandler(
        Bind(std::function<void(std::string, std::string)>([this](std::string protocol, std::string id) {
            RegisterAssemblyUpdateEventHandler(std::move(protocol), std::move(id));
        })));
}

void ControlRegisterAssemblyResource::RemoveRegisterAssemblyUpdateEvent() noexcept
{
    try
    {
        for (auto const& [name, id] : registerAssemblyUpdateEventIds)
        {
            ResolveToInstance(name).RemoveRegisterAssemblyUpdatedEventHandler(id);
        }
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Exception thrown while removing register assembly update event handlers");
    }
}

void ControlRegisterAssemblyResource::RegisterAssemblyUpdateEventHandler(std::string protocol, std::string id)
{
    ResourceEventHandler(Path::Format(ASSEMBLY_ROUTE, {protocol, id}));
}

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
        RethrowRefusal();
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

std::string ControlRegisterAssemblyActionResource::SubjectPath(ZuRest::RequestInfo const& request) const
{
    return SubjectOfCommand(request);
}

void ControlRegisterAssemblyActionResource::RethrowRefusal()
{
    ZU_THROW_NESTED("%s", Zu::CaughtText().c_str());
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
