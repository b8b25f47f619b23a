#pragma once

#include "Host/Http/EventsResource.h"
#include "Host/Http/HealthResource.h"
#include "Host/Http/ProblemsResource.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// What the host itself shows beside the module's tree: "/health", "/problems", "/events".
///
/// It is built when all other resources have their routes, since it listens to each of them for "/events", and destroyed
/// before them.
class HostResources final
{
public:
    /// Router and problems outlive this.
    HostResources(ZuRest::ResourceRouter& usedRouter, ZuCommon::ProblemsManager const& problems);
    ~HostResources(); ///< takes its routes away

    HostResources(HostResources const&) = delete;
    HostResources& operator=(HostResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    HealthResource health;
    ProblemsResource problemList;
    EventsResource events;
};

} // namespace ZuHost
