#pragma once

#include "Host/Description/OpenApi.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <string>
#include <vector>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// "/openapi.json": the description of the REST service. It is made once, when the page is made, and shown from memory.
class OpenApiPage final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    /// Registers the route and makes the description of all routes that are registered by then. The router outlives
    /// the page.
    OpenApiPage(ZuRest::ResourceRouter& usedRouter, OpenApi::Service const& service);
    ~OpenApiPage() override; ///< removes the route

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    ZuRest::ResourceRouter& router;
    std::string text;
    std::string tag;
};

} // namespace ZuHost
