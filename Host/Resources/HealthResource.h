#pragma once

#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IPromptResource.h"
#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

/// Shows that the host runs: "upTimeSec" is the time since the start, "faults" has a sentence for each part that has
/// died or hangs, and "status" is "ok" without faults, else "faulty". Requests are answered even while others are
/// blocked.
class HealthResource final : public ZuRest::DocumentResourceBase, public ZuRest::IPromptResource
{
public:
    /// `newFindFaults` returns the faults; if empty, there are none. It must be thread-safe and must not wait. The
    /// objects that it uses outlive the resource.
    explicit HealthResource(std::function<std::vector<std::string>()> newFindFaults = nullptr);
    ~HealthResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    std::function<std::vector<std::string>()> const findFaults;
    uint64 const bornUsec;
};

} // namespace ZuHost
