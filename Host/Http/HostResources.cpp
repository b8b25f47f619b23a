#include "Host/Http/HostResources.h"

#include "ZuRest/ResourceRouter.h"

namespace ZuHost
{

HostResources::HostResources(ZuRest::ResourceRouter& usedRouter, ZuCommon::ProblemsManager const& problems)
    : router(usedRouter), problemList(problems)
{
    for (ZuRest::IResource* const resource : router.Resources())
    {
        events.ListenTo(*resource);
    }
    router.Register("/health", health);
    router.Register("/problems", problemList);
    router.Register("/events", events);
}

HostResources::~HostResources()
{
    router.Deregister("/events", false);
    router.Deregister("/problems", false);
    router.Deregister("/health", false);
}

} // namespace ZuHost
