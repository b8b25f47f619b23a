#include "ZuControl/Protocol/ControlOutputsResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using ZuRest::Path;

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

} // namespace ZuControl::Protocol
