#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuHost
{

class JobManager;

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

} // namespace ZuHost
