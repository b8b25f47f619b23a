#include "Host/Security/TokenResources.h"

#include "Host/Security/RouteTable.h"
#include "Host/Security/RoutesResource.h"
#include "Host/Security/SecurityStore.h"
#include "Host/Security/TokenStore.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

constexpr int64 NOW = 1'800'000'000;

class TokenResourcesTest : public testing::Test
{
protected:
    ZuRest::Answer Send(std::string const& method, std::string const& path, std::string const& body = "")
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        return processor.Process(request).answer;
    }

    std::string DetailOf(std::string const& body)
    {
        ZuRest::Answer const answer = Send("POST", "/tokens", body);
        return std::to_string(answer.status) + ' ' + Json::parse(answer.body).at("detail").get<std::string>();
    }

    ZuTest::ScratchFolder folder;
    SecurityStore store{folder / "security.zpset"};
    TokenStore tokens{store, [] { return NOW; }};
    ZuRest::ResourceRouter router;
    TokenResources resources{router, tokens};
    RoutesResource routes{router};
    ZuRest::ResourceRequestProcessor processor{router};
};

} // namespace

TEST_F(TokenResourcesTest, ShowsASecretOnceAndNeverAgain)
{
    ZuRest::Answer const made =
        Send("POST", "/tokens", R"({"name": "line 4", "role": "viewer", "end": "2028-01-31T12:00:00Z"})");

    EXPECT_EQ(made.status, 201U);
    EXPECT_EQ(made.headers, (std::vector<std::pair<std::string, std::string>>{{"Location", "/tokens/line%204"},
                                                                              {"Cache-Control", "no-store"}}));
    Json document = Json::parse(made.body);
    std::string const secret = document.at("token");
    document.erase("token");
    EXPECT_EQ(document, (Json::parse(R"({"name": "line 4", "role": "viewer", "made": "2027-01-15T08:00:00Z",
                                         "end": "2028-01-31T12:00:00Z", "lastUse": null, "ended": false,
                                         "_links": {"self": {"href": "/tokens/line%204"}}})")));
    for (char const* path : {"/tokens", "/tokens/line%204"})
    {
        ZuRest::Answer const shown = Send("GET", path);
        EXPECT_EQ(shown.status, 200U);
        EXPECT_EQ(shown.body.find(secret.substr(3)), std::string::npos) << shown.body;
    }
    EXPECT_EQ(Json::parse(Send("GET", "/tokens/line%204").body), document);
}

TEST_F(TokenResourcesTest, ListsTheTokens)
{
    tokens.Make("b", ZuCommon::Role::VIEWER, std::nullopt);
    tokens.Make("a", ZuCommon::Role::ENGINEER, std::nullopt);

    Json const list = Json::parse(Send("GET", "/tokens").body);

    EXPECT_EQ(list.at("most"), 64);
    ASSERT_EQ(list.at("_embedded").at("item").size(), 2U);
    EXPECT_EQ(list.at("_embedded").at("item")[0].at("name"), "a");
    EXPECT_EQ(list.at("_embedded").at("item")[1].at("role"), "viewer");
}

TEST_F(TokenResourcesTest, RevokesAToken)
{
    tokens.Make("a", ZuCommon::Role::VIEWER, std::nullopt);

    EXPECT_EQ(Send("DELETE", "/tokens/a").status, 204U);
    EXPECT_EQ(Send("DELETE", "/tokens/a").status, 404U);
    EXPECT_EQ(Send("GET", "/tokens/a").status, 404U);
    EXPECT_TRUE(tokens.List().empty());
}

TEST_F(TokenResourcesTest, RefusesOrdersThatItDoesNotUnderstand)
{
    EXPECT_EQ(DetailOf("[]"), "422 The body is an object with 'name', 'role' and, if wanted, 'end'.");
    EXPECT_EQ(DetailOf(R"({"name": "a", "role": "viewer", "x": 1})"),
              "422 There is no member 'x', but 'name', 'role' and 'end'.");
    EXPECT_EQ(DetailOf(R"({"name": 1, "role": "viewer"})"), "422 The member 'name' is a text.");
    for (char const* body : {R"({"name": "a"})", R"({"name": "a", "role": "none"})", R"({"name": "a", "role": "god"})"})
    {
        EXPECT_EQ(DetailOf(body), "422 The role is 'viewer', 'operator', 'engineer' or 'administrator'.");
    }
    EXPECT_EQ(DetailOf(R"({"name": "a", "role": "viewer", "end": "tomorrow"})"),
              "422 The end is a time in UTC like 2027-01-31T12:00:00Z.");
    EXPECT_EQ(DetailOf(R"({"name": "a", "role": "viewer", "end": "1999-01-31T12:00:00Z"})"),
              "422 The end of a token lies in the future, and within ten years.");
    EXPECT_EQ(Send("POST", "/tokens", R"({"role": "viewer"})").status, 422U);
    EXPECT_EQ(Send("POST", "/tokens", "{").status, 400U);
    EXPECT_EQ(Send("POST", "/tokens", "").status, 400U);
    EXPECT_TRUE(tokens.List().empty());
}

TEST_F(TokenResourcesTest, RefusesASecondTokenOfOneName)
{
    EXPECT_EQ(Send("POST", "/tokens", R"({"name": "a", "role": "viewer", "end": null})").status, 201U);
    EXPECT_EQ(DetailOf(R"({"name": "a", "role": "viewer"})"), "409 There is a token 'a' already: delete it first.");
}

TEST_F(TokenResourcesTest, ShowsTheTableOfRoutes)
{
    Json const list = Json::parse(Send("GET", "/routes").body).at("routes");

    ASSERT_EQ(list.size(), RouteTable::All().size());
    EXPECT_EQ(list[0], (Json{{"method", "GET"},
                             {"path", "/"},
                             {"role", "viewer"},
                             {"description", RouteTable::All().front().description}}));
}

} // namespace ZuHost
