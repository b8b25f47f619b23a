#include "Host/Resources/HostResources.h"

#include "ZuRest/ResourceRouter.h"

#include <utility>

namespace ZuHost
{

HostResources::HostResources(ZuRest::ResourceRouter& usedRouter, ZuCommon::ProblemsManager const& problems,
                             ZuScan::Internal::ScanEngineManager const& scanEngines,
                             std::function<std::vector<std::string>()> findFaults)
    : router(usedRouter), root(router), health(std::move(findFaults)), problemList(problems), scanners(scanEngines)
{
    for (ZuRest::IResource* const resource : router.Resources())
    {
        events.ListenTo(*resource);
    }
    router.Register("/", root);
    router.Register("/health", health);
    router.Register("/problems", problemList);
    router.Register("/events", events);
    router.Register("/scanners/:id", scanners);
    router.Register("/relations/:rel", relations);
}

HostResources::~HostResources()
{
    router.Deregister("/relations", true);
    router.Deregister("/scanners", true);
    router.Deregister("/events", false);
    router.Deregister("/problems", false);
    router.Deregister("/health", false);
    router.Deregister("/", false);
}

} // namespace ZuHost
