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

/// What the host itself shows beside the module's tree: "/", "/health", "/problems", "/events", "/scanners", "/relations".
///
/// It is built when all other resources have their routes, since it listens to each of them for "/events", and destroyed
/// before them.
class HostResources final
{
public:
    /// Where the meaning of a relation is told, as a URI template.
    static constexpr char const* RELATION_TEMPLATE = "/relations/{rel}";

    /// Router, problems and engines outlive this, and what `findFaults` needs does; see HealthResource.
    HostResources(ZuRest::ResourceRouter& usedRouter, ZuCommon::ProblemsManager const& problems,
                  ZuScan::Internal::ScanEngineManager const& scanEngines,
                  std::function<std::vector<std::string>()> findFaults = nullptr);
    ~HostResources(); ///< takes its routes away

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
