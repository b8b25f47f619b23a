#include "Host/Resources/ProblemsResource.h"

#include "ZuCommon/Problems.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <ctime>

namespace ZuHost
{

namespace
{

using ZuCommon::ProblemsManager;

/// Microseconds since 1970 as "2026-01-31T23:59:59.999Z".
std::string TimeText(uint64 usec)
{
    auto const seconds = static_cast<std::time_t>(usec / 1'000'000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> day{};
    std::strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 8> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03uZ", static_cast<unsigned>(usec / 1'000 % 1'000));
    return std::string(day.data()) + fraction.data();
}

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
                        {"since", TimeText(problem.sinceUsec)}});
    }
    return {{"problems", std::move(list)}};
}

} // namespace ZuHost
