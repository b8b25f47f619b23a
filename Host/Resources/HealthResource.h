#pragma once

#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IPromptResource.h"
#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

/// Tells that the host is there and answers, how long it has been there ("upTimeSec"), and what of it has died or stands still
/// ("faults", a sentence each): "status" is "ok" without such and "faulty" with them. It answers whatever else is held up.
class HealthResource final : public ZuRest::DocumentResourceBase, public ZuRest::IPromptResource
{
public:
    /// Without `newFindFaults` nothing is ever found. What it needs outlives this. Any thread may call it, and it
    /// waits for nobody.
    explicit HealthResource(std::function<std::vector<std::string>()> newFindFaults = nullptr);
    ~HealthResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    std::function<std::vector<std::string>()> const findFaults;
    uint64 const bornUsec;
};

} // namespace ZuHost
