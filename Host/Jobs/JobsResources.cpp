#include "Host/Jobs/JobsResources.h"

#include "Host/Jobs/JobManager.h"
#include "ZuRest/ResourceRouter.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

JobsResources::JobsResources(ZuRest::ResourceRouter& usedRouter, JobManager& usedManager)
    : router(usedRouter),
      manager(usedManager),
      list(manager),
      file(manager),
      load([this](JobName const& name) {
          manager.Load(name);
          return JobReportResource::DocumentOf(manager.Report(name));
      }),
      save([this](JobName const& name) {
          manager.SaveAs(name);
          return nlohmann::json();
      }),
      report(manager)
{
    router.Register("/jobs", list);
    router.Register("/jobs/:name", file);
    router.Register("/jobs/:name/load", load);
    router.Register("/jobs/:name/save", save);
    router.Register("/jobs/:name/report", report);
    changes = manager.ListChangedSignal().Subscribe(
        [this] { list.NotificationEvent().Fire(list, ZuRest::EventType::CHANGED, "/jobs"); });
}

JobsResources::~JobsResources()
{
    changes.End();
    router.Deregister("/jobs", true);
}

} // namespace ZuHost
