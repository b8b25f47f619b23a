#pragma once

#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

namespace ZuHost
{

class JobManager;
class JobName;

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

} // namespace ZuHost
