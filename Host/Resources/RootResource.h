#pragma once

#include "ZuRest/DocumentResourceBase.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// The entry point for clients: the document at "/" has product and version, and links to the other resources.
///
/// Resources that no other document links are linked here by a URI template. A link is shown only if its route exists.
class RootResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The router outlives the resource.
    explicit RootResource(ZuRest::ResourceRouter const& usedRouter);
    ~RootResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    ZuRest::ResourceRouter const& router;
};

} // namespace ZuHost
