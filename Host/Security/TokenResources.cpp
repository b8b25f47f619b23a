#include "Host/Security/TokenResources.h"

#include "Host/Security/TokenStore.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using Json = nlohmann::json;
using ZuRest::Answer;

namespace
{

constexpr char const* LIST_ROUTE = "/tokens";
constexpr char const* ROUTE = "/tokens/:name";

Json TimeOrNull(std::optional<int64> seconds)
{
    return seconds.has_value() ? Json(UtcTime::Text(*seconds)) : Json();
}

Json DocumentOf(TokenStore::Token const& token)
{
    return {{"name", token.name},
            {"role", ZuCommon::RoleName(token.role)},
            {"made", UtcTime::Text(token.madeSeconds)},
            {"end", TimeOrNull(token.endSeconds)},
            {"lastUse", TimeOrNull(token.lastUseSeconds)},
            {"ended", token.hasEnded}};
}

/// What a client wants to make.
struct Order
{
    std::string name;
    ZuCommon::Role role = ZuCommon::Role::NONE;
    std::optional<int64> endSeconds;
};

/// The text of a member; empty if it is absent or null.
std::string TextIn(Json const& body, char const* key)
{
    auto const found = body.find(key);
    if (found == body.end() || found->is_null())
    {
        return "";
    }
    if (!found->is_string())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The member '%s' is a text.", key);
    }
    return *found;
}

/// Throws `Zu::Status::BAD_ARGUMENT` with a sentence for a body that is no order.
Order OrderIn(std::string const& text)
{
    Json const body = ZuRest::JsonText::Read(text);
    if (!body.is_object())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The body is an object with 'name', 'role' and, if wanted, 'end'.");
    }
    for (auto const& [key, value] : body.items())
    {
        if (key != "name" && key != "role" && key != "end")
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "There is no member '%s', but 'name', 'role' and 'end'.", key.c_str());
        }
    }
    Order order{TextIn(body, "name"), ZuCommon::Role::NONE, std::nullopt};
    auto const role = ZuCommon::RoleOfName(TextIn(body, "role"));
    if (!role.has_value())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The role is 'viewer', 'operator', 'engineer' or 'administrator'.");
    }
    order.role = *role;
    if (std::string const end = TextIn(body, "end"); !end.empty())
    {
        order.endSeconds = UtcTime::Parse(end);
        if (!order.endSeconds.has_value())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The end is a time in UTC like 2027-01-31T12:00:00Z.");
        }
    }
    return order;
}

std::string RequestedName(ZuRest::RequestInfo const& info)
{
    std::string const* const name = info.FindKey("name");
    return name != nullptr ? *name : "";
}

} // namespace

TokenListResource::TokenListResource(TokenStore& usedTokens) : tokens(usedTokens)
{
}

TokenListResource::~TokenListResource() = default;

Json TokenListResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& response)
{
    for (TokenStore::Token const& token : tokens.List())
    {
        response.Embed("item", ZuRest::Path::Format(ROUTE, {token.name}), true, {{"title", token.name}});
    }
    return {{"most", TokenStore::MAX_TOKENS}};
}

std::vector<std::string> TokenListResource::ContentMethods() const
{
    return {"POST"};
}

Answer TokenListResource::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& /*info*/)
{
    Order const order = OrderIn(request.body);
    std::string const secret = tokens.Make(order.name, order.role, order.endSeconds);
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, LIST_ROUTE);
    std::string const path = ZuRest::Path::Format(ROUTE, {order.name});
    Json document = DocumentOf(tokens.Get(order.name));
    document["token"] = secret;
    document["_links"] = {{"self", {{"href", path}}}};
    return {HttpStatus::CREATED,
            "application/hal+json",
            ZuRest::JsonText::Write(document),
            {{"Location", path}, {"Cache-Control", "no-store"}}};
}

TokenResource::TokenResource(TokenStore& usedTokens, TokenListResource& usedList) : tokens(usedTokens), list(usedList)
{
}

TokenResource::~TokenResource() = default;

Json TokenResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    return DocumentOf(tokens.Get(RequestedName(request)));
}

std::vector<std::string> TokenResource::ContentMethods() const
{
    return {"DELETE"};
}

Answer TokenResource::AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& info)
{
    tokens.Revoke(RequestedName(info));
    list.NotificationEvent().Fire(list, ZuRest::EventType::CHANGED, LIST_ROUTE);
    return {HttpStatus::NO_CONTENT, "", "", {}};
}

TokenResources::TokenResources(ZuRest::ResourceRouter& usedRouter, TokenStore& tokens)
    : router(usedRouter), list(tokens), one(tokens, list)
{
    router.Register(LIST_ROUTE, list);
    router.Register(ROUTE, one);
}

TokenResources::~TokenResources()
{
    router.Deregister(LIST_ROUTE, true);
}

} // namespace ZuHost
