#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuHost
{

class JobManager;
struct LoadReport;

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

} // namespace ZuHost
