#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// "/routes": the table of routes, with the role that each needs. Registers itself.
class RoutesResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The router outlives this.
    explicit RoutesResource(ZuRest::ResourceRouter& usedRouter);
    ~RoutesResource() override; ///< removes its route

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    ZuRest::ResourceRouter& router;
};

} // namespace ZuHost
