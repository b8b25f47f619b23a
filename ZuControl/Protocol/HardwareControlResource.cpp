#include "ZuControl/Protocol/HardwareControlResource.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

HardwareProperties::HardwareProperties() : Structure(true)
{
    Register("label", label);
}

HardwareProperties::~HardwareProperties() = default;

using Zu::Properties::JsonSerializer;
using ZuRest::Path;

HardwareControlResource::HardwareControlResource(IControlManager& usedManager) : ControlResourceBase(usedManager)
{
}

HardwareControlResource::~HardwareControlResource()
{
    EndCallbacks();
}

nlohmann::json HardwareControlResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    if (!request.keys.empty())
    {
        return ReadOne(request, response);
    }
    ReadAll(response);
    return nlohmann::json::object();
}

void HardwareControlResource::ReadAll(ZuRest::ResponseInfo& response)
{
    for (char const* const device : {"0", "1"}) // always both, independent of the sensors
    {
        response.Embed("item", Path::Format("/controls/hardware/:device", {device}), true, nullptr);
    }
}

nlohmann::json HardwareControlResource::ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    std::string const& device = RouteKey(request, "device");
    response.Link("zu::scanner", "/scanners/" + device, false, nullptr); // two colons: clients rely on this key
    EmbedOutputs(device, response);
    nlohmann::json document = JsonSerializer::Serialize(properties);
    if (request.wantsSchema)
    {
        AppendSchema(JsonSerializer(), properties, document);
    }
    return document;
}

void HardwareControlResource::EmbedOutputs(std::string const& device, ZuRest::ResponseInfo& response)
{
    struct Kind
    {
        char const* key;
        char const* path;
    };
    // Without a port: all ports show the same.
    constexpr Kind KINDS[] = {{"zu:digitalOutput", "/controls/hardware/:device/digital"},
                              {"zu:analogOutput", "/controls/hardware/:device/analog"},
                              {"zu:marletOutput", "/controls/hardware/:device/marlet"},
                              {"zu:serialOutput", "/controls/hardware/:device/serial"}};
    for (Kind const& kind : KINDS)
    {
        response.Embed(kind.key, Path::Format(kind.path, {device}), false, nullptr);
    }
}

} // namespace ZuControl::Protocol
