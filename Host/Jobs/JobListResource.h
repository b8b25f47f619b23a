#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuHost
{

class JobManager;

/// "/jobs": the jobs by name; which is loaded and whether it has changes that are not saved yet.
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

} // namespace ZuHost
