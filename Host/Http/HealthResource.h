#pragma once

#include "ZuRest/DocumentResourceBase.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// Tells that the host is there and answers: "status" is "ok", "upTimeSec" how long it has been there.
class HealthResource final : public ZuRest::DocumentResourceBase
{
public:
    HealthResource();
    ~HealthResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    uint64 const bornUsec;
};

} // namespace ZuHost
