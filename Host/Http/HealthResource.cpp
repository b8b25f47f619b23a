#include "Host/Http/HealthResource.h"

#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

HealthResource::HealthResource() : bornUsec(wTime_NowUsec())
{
}

HealthResource::~HealthResource() = default;

nlohmann::json HealthResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    return {{"status", "ok"}, {"upTimeSec", (wTime_NowUsec() - bornUsec) / 1'000'000}};
}

} // namespace ZuHost
