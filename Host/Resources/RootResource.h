#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// Where a client begins: the document at "/" tells what runs here and links what there is.
///
/// What no other document links stands here as a URI template. A link is there when its route is.
class RootResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The router outlives this.
    explicit RootResource(ZuRest::ResourceRouter const& usedRouter);
    ~RootResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    ZuRest::ResourceRouter const& router;
};

} // namespace ZuHost
