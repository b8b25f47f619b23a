#include "Host/Security/RoutesResource.h"

#include "Host/Security/RouteTable.h"
#include "ZuRest/ResourceRouter.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

constexpr char const* PATH_OF_ROUTES = "/routes";

} // namespace

RoutesResource::RoutesResource(ZuRest::ResourceRouter& usedRouter) : router(usedRouter)
{
    router.Register(PATH_OF_ROUTES, *this);
}

RoutesResource::~RoutesResource()
{
    router.Deregister(PATH_OF_ROUTES, false);
}

nlohmann::json RoutesResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    nlohmann::json list = nlohmann::json::array();
    for (RouteTable::Route const& route : RouteTable::All())
    {
        list.push_back({{"method", route.method},
                        {"path", route.path},
                        {"role", ZuCommon::RoleName(route.role)},
                        {"description", route.description}});
    }
    return {{"routes", std::move(list)}};
}

} // namespace ZuHost
