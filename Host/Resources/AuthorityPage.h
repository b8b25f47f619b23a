#pragma once

#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <string>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// "/authority": the authority that has signed the certificate for HTTPS, as a file for browsers and other clients.
class AuthorityPage final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    /// Registers the route. The router outlives the page.
    AuthorityPage(ZuRest::ResourceRouter& usedRouter, std::string newPem);
    ~AuthorityPage() override; ///< removes the route

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    ZuRest::ResourceRouter& router;
    std::string const pem;
};

} // namespace ZuHost
