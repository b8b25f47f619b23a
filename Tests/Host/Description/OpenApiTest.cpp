#include "Host/Description/OpenApi.h"

#include "Host/Description/DescriptionTexts.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace ZuHost
{

using nlohmann::json;

namespace
{

/// A service that has all routes of the table, and no document.
OpenApi::Service AllRoutes()
{
    return {"1.2.3", [](std::string const& /*route*/) { return "GET, HEAD, PUT, PATCH, POST, DELETE, OPTIONS"; },
            [](std::string const& path) -> json { ZU_THROW(Zu::Status::NOT_FOUND, "no %s", path.c_str()); }};
}

/// Calls `use` with each operation of the description and its request.
template <typename Use>
void ForEachOperation(json const& description, Use const& use)
{
    for (auto const& [path, operations] : description.at("paths").items())
    {
        for (auto const& [method, operation] : operations.items())
        {
            use(method + ' ' + path, operation);
        }
    }
}

/// Collects the targets of all references.
void CollectReferences(json const& value, std::set<std::string>& targets)
{
    for (auto const& [key, inner] : value.items())
    {
        if (key == "$ref")
        {
            targets.insert(inner.get<std::string>().substr(1));
        }
        else if (inner.is_structured())
        {
            CollectReferences(inner, targets);
        }
    }
}

} // namespace

TEST(OpenApi, EachRequestHasADescription)
{
    std::vector<std::string> const described = OpenApi::DescribedRequests();
    for (RouteTable::Route const& route : RouteTable::All())
    {
        std::string const request = std::string(route.method) + ' ' + route.path;
        EXPECT_NE(std::ranges::find(described, request), described.end())
            << "Host/Description/description.json does not describe " << request;
    }
}

TEST(OpenApi, EachDescriptionHasARequest)
{
    std::vector<std::string> const requests = OpenApi::RequestsToDescribe();
    for (std::string const& request : OpenApi::DescribedRequests())
    {
        EXPECT_NE(std::ranges::find(requests, request), requests.end()) << "the route table does not name " << request;
    }
}

TEST(OpenApi, EachExampleHasADescription)
{
    std::vector<std::string> const described = OpenApi::DescribedRequests();
    json const examples = json::parse(DescriptionTexts::Examples());
    EXPECT_GT(examples.size(), 40U);
    for (auto const& [request, answers] : examples.items())
    {
        EXPECT_NE(std::ranges::find(described, request), described.end()) << request;
    }
}

TEST(OpenApi, EachReferenceHasATarget)
{
    json const description = OpenApi::Describe(AllRoutes());
    std::set<std::string> targets;
    CollectReferences(description, targets);
    EXPECT_TRUE(targets.contains("/components/schemas/Problem"));
    for (std::string const& target : targets)
    {
        EXPECT_TRUE(description.contains(json::json_pointer(target))) << target;
    }
}

TEST(OpenApi, EachOperationIsWhole)
{
    json const description = OpenApi::Describe(AllRoutes());
    std::set<std::string> ids;
    ForEachOperation(description, [&](std::string const& request, json const& operation) {
        EXPECT_TRUE(ids.insert(operation.at("operationId")).second) << request;
        EXPECT_NE(operation.at("summary"), "") << request;
        EXPECT_NE(operation.at("summary"), "as PUT") << request;
        EXPECT_TRUE(description.at("tags").is_array());
        EXPECT_TRUE(operation.at("responses").contains("401")) << request;
        bool const hasAnswer = std::ranges::any_of(operation.at("responses").items(), [](auto const& response) {
            return response.key().starts_with('2') || response.key() == "303";
        });
        EXPECT_TRUE(hasAnswer) << request;
    });
    EXPECT_EQ(ids.size(), OpenApi::DescribedRequests().size());
}

TEST(OpenApi, SaysWhichRoleARequestNeeds)
{
    json const paths = OpenApi::Describe(AllRoutes()).at("paths");

    json const& open = paths.at("/health").at("get");
    EXPECT_EQ(open.at("x-role"), "none");
    EXPECT_EQ(open.at("security"), json::array());

    json const& closed = paths.at("/controls/{protocol}").at("put");
    EXPECT_EQ(closed.at("x-role"), "engineer");
    EXPECT_EQ(closed.at("security"), json::parse(R"([{"token": ["engineer"]}, {"session": ["engineer"]}])"));
    EXPECT_EQ(paths.at("/controls").at("get").at("x-role"), "viewer") << "as its elements";
}

TEST(OpenApi, NamesTheParametersOfARequest)
{
    json const paths = OpenApi::Describe(AllRoutes()).at("paths");
    auto const names = [](json const& operation) {
        std::vector<std::string> all;
        for (json const& parameter : operation.value("parameters", json::array()))
        {
            std::string const target = parameter.at("$ref");
            all.push_back(target.substr(target.rfind('/') + 1));
        }
        return all;
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(names(paths.at("/controls/{protocol}").at("put")), (Names{"protocol", "If-Match", "Prefer"}));
    EXPECT_EQ(names(paths.at("/controls/{protocol}").at("get")), (Names{"protocol", "query.schema", "If-None-Match"}));
    EXPECT_EQ(names(paths.at("/profile").at("get")),
              (Names{"query.points", "query.rate", "query.schema", "If-None-Match"}));
    EXPECT_EQ(names(paths.at("/metrics").at("get")), Names{});
}

TEST(OpenApi, LeavesOutWhatTheServiceDoesNotHave)
{
    OpenApi::Service service = AllRoutes();
    service.findMethods = [](std::string const& route) {
        return route == "/jobs/:name" ? "GET, HEAD, DELETE, OPTIONS" : "";
    };

    json const description = OpenApi::Describe(service);

    EXPECT_EQ(description.at("paths").size(), 1U);
    json const& job = description.at("/paths/~1jobs~1{name}"_json_pointer);
    EXPECT_TRUE(job.contains("get"));
    EXPECT_TRUE(job.contains("delete"));
    EXPECT_FALSE(job.contains("put"));
    EXPECT_EQ(description.at("info").at("version"), "1.2.3");
}

TEST(OpenApi, ShowsStreamsBesideDocuments)
{
    json const paths = OpenApi::Describe(AllRoutes()).at("paths");
    json const& events = paths.at("/events").at("get").at("responses").at("200").at("content").at("text/event-stream");
    EXPECT_EQ(events.at("x-report").at("$ref"), "#/components/schemas/Event");
    json const& profile = paths.at("/profile").at("get").at("responses").at("200").at("content");
    EXPECT_TRUE(profile.contains("application/octet-stream"));
    EXPECT_TRUE(profile.contains("application/hal+json"));
}

} // namespace ZuHost
