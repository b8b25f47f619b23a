#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuHost
{

/// The problems that stand now, the oldest first: "severity" ("warning", "error"), "source", "text" and "since", UTC with
/// milliseconds as ISO 8601 has it.
class ProblemsResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The manager outlives this.
    explicit ProblemsResource(ZuCommon::ProblemsManager const& shownProblems);
    ~ProblemsResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    ZuCommon::ProblemsManager const& problems;
};

} // namespace ZuHost
