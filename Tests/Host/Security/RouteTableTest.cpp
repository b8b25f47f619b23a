#include "Host/Security/RouteTable.h"

#include "Support/FakeResource.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

namespace ZuHost
{

namespace
{

using ZuCommon::Role;

/// The path of the entry that the table finds; empty if there is none.
std::string Found(std::string_view method, std::string_view path)
{
    RouteTable::Route const* const route = RouteTable::Find(method, path);
    return route != nullptr ? route->path : "";
}

} // namespace

TEST(RouteTable, NamesEachRequestOnceWithARoleAndADescription)
{
    std::set<std::string> known;
    for (RouteTable::Route const& route : RouteTable::All())
    {
        EXPECT_TRUE(known.insert(std::string(route.method) + ' ' + route.path).second) << route.method << route.path;
        EXPECT_STRNE(route.description, "") << route.path;
        EXPECT_EQ(RouteTable::Find(route.method, route.path), &route) << route.method << route.path;
    }
    EXPECT_FALSE(known.empty());
}

TEST(RouteTable, PrefersLiteralsToKeys)
{
    EXPECT_EQ(Found("GET", "/controls/ModbusTcp"), "/controls/:protocol");
    EXPECT_EQ(Found("GET", "/controls/hardware"), "/controls/hardware/:device");
    EXPECT_EQ(Found("GET", "/controls/hardware/0"), "/controls/hardware/:device");
    EXPECT_EQ(Found("GET", "/controls/hardware/metrics"), "/controls/hardware/metrics");
    EXPECT_EQ(Found("GET", "/controls/ModbusTcp/metrics"), "/controls/:protocol/metrics");
    EXPECT_EQ(Found("POST", "/controls/a/outputs/commands/add"), "/controls/:protocol/outputs/commands/:command");
    EXPECT_EQ(Found("GET", "/controls/hardware/outputs/commands/add"), "/controls/:protocol/outputs/commands/:command")
        << "no route with the literal goes on";
}

TEST(RouteTable, ChoosesAsTheRouterDoes)
{
    ZuRest::ResourceRouter router;
    std::map<std::string, ZuTest::FakeResource> resources;
    for (RouteTable::Route const& route : RouteTable::All())
    {
        if (auto const [place, isNew] = resources.try_emplace(route.path); isNew)
        {
            router.Register(route.path, place->second);
        }
    }
    std::vector<std::string> const words{"",        "controls", "hardware", "jobs", "a",       "%63ontrols",
                                         "metrics", "outputs",  "commands", "load", "digital", ":key"};
    std::vector<std::string> paths{"", "/"};
    for (std::size_t begin = 0, length = 0; length < 4; ++length)
    {
        std::size_t const end = paths.size();
        for (; begin < end; ++begin)
        {
            for (std::string const& word : words)
            {
                paths.push_back((paths[begin] == "/" ? "" : paths[begin]) + '/' + word);
            }
        }
    }
    for (std::string const& path : paths)
    {
        auto const match = router.Find(path);
        ASSERT_EQ(match.has_value(), RouteTable::HasPath(path)) << path;
        if (match.has_value())
        {
            RouteTable::Route const* const get = RouteTable::Find("GET", path);
            RouteTable::Route const* const route = get != nullptr ? get : RouteTable::Find("POST", path);
            ASSERT_NE(route, nullptr) << path;
            ASSERT_EQ(match->resource, &resources[route->path]) << path;
        }
    }
    router.Deregister("/", true);
}

TEST(RouteTable, FindsARouteWithoutItsLastKey)
{
    EXPECT_EQ(Found("GET", "/controls"), "/controls/:protocol");
    EXPECT_EQ(Found("GET", "/jobs"), "/jobs");
    EXPECT_EQ(Found("PUT", "/jobs"), "");
    EXPECT_EQ(Found("GET", "/controls/hardware/0/digital"), "/controls/hardware/:device/digital/:port");
    EXPECT_EQ(Found("GET", "/controls/ModbusTcp/registerAssemblies"),
              "/controls/:protocol/registerAssemblies/:registerAssembly");
}

TEST(RouteTable, DecodesAPathBeforeItLooks)
{
    EXPECT_EQ(Found("PUT", "/%63ontrols/a%2Fb"), "/controls/:protocol");
    EXPECT_EQ(Found("POST", "/jobs/a%20b/loa%64"), "/jobs/:name/load");
}

TEST(RouteTable, FindsNothingForOtherRequests)
{
    for (char const* path : {"", "*", "jobs", "//", "/jobs/", "/jobs//load", "/nowhere", "/jobs/a/load/b", "/Jobs"})
    {
        EXPECT_EQ(Found("GET", path), "") << path;
        EXPECT_FALSE(RouteTable::HasPath(path)) << path;
    }
    EXPECT_EQ(Found("DELETE", "/health"), "");
    EXPECT_EQ(Found("OPTIONS", "/health"), "");
    EXPECT_EQ(Found("", "/health"), "");
    EXPECT_EQ(Found("get", "/health"), "");
}

TEST(RouteTable, FindsTheRequestsThatItDoesNotName)
{
    std::map<std::string, std::string> const methods{{"/", "GET, HEAD, OPTIONS"},
                                                     {"/jobs/:key", "GET, HEAD, PUT, POST, DELETE, OPTIONS"},
                                                     {"/jobs/:key/load", "POST, OPTIONS"},
                                                     {"/new/:key", "GET, HEAD, PATCH, OPTIONS"}};
    std::vector<std::string> routes;
    for (auto const& [route, text] : methods)
    {
        routes.push_back(route);
    }
    EXPECT_EQ(RouteTable::Missing(routes, [&](auto const& route) { return methods.at(route); }),
              (std::vector<std::string>{"POST /jobs/:key", "GET /new/:key", "PATCH /new/:key"}));
}

TEST(RouteTable, TakesHeadForGet)
{
    EXPECT_EQ(Found("HEAD", "/jobs"), "/jobs");
    EXPECT_EQ(Found("HEAD", "/jobs/a/load"), "");
}

TEST(RouteTable, GivesEachKindOfRequestItsRole)
{
    struct Row
    {
        char const* method;
        char const* path;
        Role role;
    };
    constexpr Row ROWS[] = {{"GET", "/health", Role::NONE},
                            {"GET", "/", Role::VIEWER},
                            {"GET", "/events", Role::VIEWER},
                            {"POST", "/jobs/a/load", Role::OPERATOR},
                            {"POST", "/controls/a/commands/b", Role::OPERATOR},
                            {"POST", "/jobs/a/save", Role::ENGINEER},
                            {"PUT", "/jobs/a", Role::ENGINEER},
                            {"DELETE", "/jobs/a", Role::ENGINEER},
                            {"PATCH", "/controls/a", Role::ENGINEER},
                            {"POST", "/controls/a/outputs/commands/add", Role::ENGINEER}};
    for (Row const& row : ROWS)
    {
        EXPECT_EQ(RouteTable::Find(row.method, row.path)->role, row.role) << row.method << row.path;
    }
}

} // namespace ZuHost
