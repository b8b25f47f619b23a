#pragma once

#include "Host/Resources/EventsResource.h"
#include "Host/Resources/HealthResource.h"
#include "Host/Resources/ProblemsResource.h"
#include "Host/Resources/RelationsResource.h"
#include "Host/Resources/RootResource.h"
#include "Host/Resources/ScannersResource.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// The resources of the host itself: "/", "/health", "/problems", "/events", "/scanners", "/relations".
///
/// Construct it after all other resources have their routes, because it registers handlers with them for "/events".
/// Destroy it before them.
class HostResources final
{
public:
    /// URI template of the pages that explain relations.
    static constexpr char const* RELATION_TEMPLATE = "/relations/{rel}";

    /// Router, problems, engines and the objects that `findFaults` uses outlive this. See HealthResource for
    /// `findFaults`.
    HostResources(ZuRest::ResourceRouter& usedRouter, ZuCommon::ProblemsManager const& problems,
                  ZuScan::Internal::ScanEngineManager const& scanEngines,
                  std::function<std::vector<std::string>()> findFaults = nullptr);
    ~HostResources(); ///< removes its routes

    HostResources(HostResources const&) = delete;
    HostResources& operator=(HostResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    RootResource root;
    HealthResource health;
    ProblemsResource problemList;
    ScannersResource scanners;
    RelationsResource relations;
    EventsResource events;
};

} // namespace ZuHost
