#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuHost
{

/// The present problems, the oldest first. Members: "severity" ("warning", "error"), "source", "text", and "since", an
/// ISO 8601 time in UTC with milliseconds.
class ProblemsResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The manager outlives the resource.
    explicit ProblemsResource(ZuCommon::ProblemsManager const& shownProblems);
    ~ProblemsResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    ZuCommon::ProblemsManager const& problems;
};

} // namespace ZuHost
