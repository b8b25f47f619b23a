#pragma once

#include "Host/Jobs/JobCommandResource.h"
#include "Host/Jobs/JobListResource.h"
#include "Host/Jobs/JobReportResource.h"
#include "Host/Jobs/JobResource.h"
#include "ZuApi/Signal.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// Registers the resources at "/jobs" and below. Notifies clients of each change of the list.
class JobsResources final
{
public:
    /// Router and manager outlive this.
    JobsResources(ZuRest::ResourceRouter& usedRouter, JobManager& usedManager);
    ~JobsResources(); ///< removes its routes; no job may be loaded or changed at the same time

    JobsResources(JobsResources const&) = delete;
    JobsResources& operator=(JobsResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    JobManager& manager;

    JobListResource list;
    JobResource file;
    JobCommandResource load;
    JobCommandResource save;
    JobReportResource report;

    Zu::Subscription changes; // of the list
};

} // namespace ZuHost
