#include "Host/Resources/ProblemsResource.h"

#include "Host/Security/UtcTime.h"
#include "ZuCommon/Problems.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using ZuCommon::ProblemsManager;

} // namespace

ProblemsResource::ProblemsResource(ProblemsManager const& shownProblems) : problems(shownProblems)
{
}

ProblemsResource::~ProblemsResource() = default;

nlohmann::json ProblemsResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    nlohmann::json list = nlohmann::json::array();
    for (ProblemsManager::Problem const& problem : problems.List())
    {
        list.push_back({{"severity", problem.severity == ProblemsManager::SEVERITY_WARNING ? "warning" : "error"},
                        {"source", problem.source},
                        {"text", problem.text},
                        {"since", UtcTime::TextWithMilliseconds(problem.sinceUsec)}});
    }
    return {{"problems", std::move(list)}};
}

} // namespace ZuHost
