#pragma once

#include "Host/Store/JobName.h"
#include "ZuApi/Event.h"
#include "ZuApi/Signal.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"
#include "wApi/wMutex.h"

#include <functional>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

class JobManager;
struct LoadReport;

/// A command for one job, such as "/jobs/:name/load". It takes no arguments.
class JobCommandResource final : public ZuRest::ResourceBase, public ZuRest::ICallableResource
{
public:
    /// Gets the name of the job and returns the body of the response; null stands for no body.
    using Command = std::function<nlohmann::json(JobName const& name)>;

    explicit JobCommandResource(Command newCommand);
    ~JobCommandResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    Command const command;
};

/// "/jobs": the jobs by name, with the loaded job and whether it has unsaved changes.
class JobListResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The manager outlives this.
    explicit JobListResource(JobManager& usedManager);
    ~JobListResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    JobManager& manager;
};

/// "/jobs/:name/report": the result of the last load, for each protocol.
class JobReportResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The manager outlives this.
    explicit JobReportResource(JobManager& usedManager);
    ~JobReportResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    static nlohmann::json DocumentOf(LoadReport const& report);

private:
    JobManager& manager;
};

/// "/jobs/:name": downloads, uploads and deletes the file of a job. `ETag` and `If-Match` work as for documents.
class JobResource final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    static constexpr char const* CONTENT_TYPE = "application/vnd.sqlite3";

    /// The manager outlives this.
    explicit JobResource(JobManager& usedManager);
    ~JobResource() override;

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    ZuRest::Answer Show(ZuRest::Request const& request, JobName const& name);
    ZuRest::Answer Change(ZuRest::Request const& request, JobName const& name);
    bool IsPreconditionMet(ZuRest::Request const& request, JobName const& name);

    JobManager& manager;
};

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
