#pragma once

#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IContentResource.h"

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

class TokenStore;

/// "/tokens": the list of tokens; POST makes one.
class TokenListResource final : public ZuRest::DocumentResourceBase, public ZuRest::IContentResource
{
public:
    /// The store outlives this.
    explicit TokenListResource(TokenStore& usedTokens);
    ~TokenListResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    std::vector<std::string> ContentMethods() const override;

    /// The answer has the secret, which cannot be read again.
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    TokenStore& tokens;
};

/// "/tokens/:name": what may be shown of a token; DELETE revokes it.
class TokenResource final : public ZuRest::DocumentResourceBase, public ZuRest::IContentResource
{
public:
    /// Store and list outlive this.
    TokenResource(TokenStore& usedTokens, TokenListResource& usedList);
    ~TokenResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    TokenStore& tokens;
    TokenListResource& list;
};

/// Registers the resources at "/tokens" and below.
class TokenResources final
{
public:
    /// Router and store outlive this.
    TokenResources(ZuRest::ResourceRouter& usedRouter, TokenStore& tokens);
    ~TokenResources(); ///< removes its routes

    TokenResources(TokenResources const&) = delete;
    TokenResources& operator=(TokenResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    TokenListResource list;
    TokenResource one;
};

} // namespace ZuHost
