#include "Host/Security/PluginView.h"

#include "Host/Security/RouteTable.h"
#include "ZuApi/Exception.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

PluginView::PluginView(ZuRest::RequestProcessor& usedProcessor) : processor(usedProcessor)
{
}

PluginView::~PluginView() = default;

nlohmann::json PluginView::Read(std::string const& path, nlohmann::json const& request, std::string const& query)
{
    RouteTable::Route const* const route = RouteTable::Find("GET", path);
    if (route == nullptr || route->role > ZuCommon::Role::VIEWER)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "Plug-ins read no %s", path.c_str());
    }
    return processor.Read(path, request, query);
}

} // namespace ZuHost
