#include "Host/Resources/HealthResource.h"

#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuHost
{

HealthResource::HealthResource(std::function<std::vector<std::string>()> newFindFaults)
    : findFaults(std::move(newFindFaults)), bornUsec(wTime_NowUsec())
{
}

HealthResource::~HealthResource() = default;

nlohmann::json HealthResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    std::vector<std::string> const faults = findFaults ? findFaults() : std::vector<std::string>();
    return {{"status", faults.empty() ? "ok" : "faulty"},
            {"faults", faults},
            {"upTimeSec", (wTime_NowUsec() - bornUsec) / 1'000'000}};
}

} // namespace ZuHost
