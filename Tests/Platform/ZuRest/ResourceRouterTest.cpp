#include "ZuRest/ResourceRouter.h"

#include "ZuApi/Exception.h"
#include "ZuRest/IResource.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace ZuRest
{

namespace
{

class FakeResource final : public IResource
{
public:
    Notification& NotificationEvent() override
    {
        return event;
    }

    IParentResource* ParentProvider() override
    {
        return nullptr;
    }

    IDocumentResource* DocumentProvider() override
    {
        return nullptr;
    }

    ICallableResource* CallableProvider() override
    {
        return nullptr;
    }

    IStreamableResource* StreamableProvider() override
    {
        return nullptr;
    }

private:
    Notification event;
};

using Keys = RequestInfo::Keys;

} // namespace

class ResourceRouterTest : public testing::Test
{
protected:
    void Add(std::string const& route)
    {
        router.Register(route, resources[route]);
    }

    void ExpectMatch(std::string const& path, std::string const& route, Keys const& keys)
    {
        auto const match = router.Find(path);
        ASSERT_TRUE(match.has_value()) << path;
        EXPECT_EQ(match->resource, &resources[route]) << path << " should be " << route;
        EXPECT_EQ(match->keys, keys) << path;
    }

    void ExpectNothing(std::string const& path)
    {
        EXPECT_FALSE(router.Find(path).has_value()) << path;
    }

    std::map<std::string, FakeResource> resources;
    ResourceRouter router;
};

TEST_F(ResourceRouterTest, FillsTheKeysOfARoute)
{
    Add("/controls/:protocol/registerAssemblies/:registerAssembly");

    ExpectMatch("/controls/ModbusTcp/registerAssemblies/registerAssembly-0",
                "/controls/:protocol/registerAssemblies/:registerAssembly",
                {{"protocol", "ModbusTcp"}, {"registerAssembly", "registerAssembly-0"}});
}

TEST_F(ResourceRouterTest, PrefersALiteralWhateverTheOrder)
{
    Add("/controls/:protocol");
    Add("/controls/hardware/:device");
    Add("/controls/:protocol/metrics");
    Add("/controls/hardware/metrics");

    ExpectMatch("/controls/x", "/controls/:protocol", {{"protocol", "x"}});
    ExpectMatch("/controls/x/metrics", "/controls/:protocol/metrics", {{"protocol", "x"}});
    ExpectMatch("/controls/hardware/metrics", "/controls/hardware/metrics", {});
    ExpectMatch("/controls/hardware/0", "/controls/hardware/:device", {{"device", "0"}});
    ExpectMatch("/controls/hardware", "/controls/hardware/:device", {});
}

TEST_F(ResourceRouterTest, MatchesARouteWithoutItsLastKey)
{
    Add("/controls/:protocol");
    Add("/controls/:protocol/commands/:command");

    ExpectMatch("/controls", "/controls/:protocol", {});
    ExpectMatch("/controls/x/commands", "/controls/:protocol/commands/:command", {{"protocol", "x"}});
}

TEST_F(ResourceRouterTest, GoesBackToAKeyWhenTheLiteralLeadsNowhere)
{
    Add("/controls/:protocol/outputs/list");
    Add("/controls/hardware/:device");

    ExpectMatch("/controls/hardware/outputs/list", "/controls/:protocol/outputs/list", {{"protocol", "hardware"}});
}

TEST_F(ResourceRouterTest, KnowsNoOtherPaths)
{
    Add("/controls/:protocol/commands/:command");

    for (char const* const path : {"", "/", "controls", "/controls", "/controls/", "/controls/x", "/controls//commands",
                                   "/controls/x/commands/y/z", "/Controls/x/commands/y", "/controls/x/commands/"})
    {
        ExpectNothing(path);
    }
}

TEST_F(ResourceRouterTest, KnowsTheRoot)
{
    Add("/");
    Add("/health");

    ExpectMatch("/", "/", {});
    ExpectMatch("/health", "/health", {});
    ExpectNothing("//");
}

TEST_F(ResourceRouterTest, ListsEachResourceOnce)
{
    Add("/controls/:protocol");
    Add("/controls/:protocol/metrics");
    router.Register("/controls", resources["/controls/:protocol"]);

    std::vector<IResource*> const listed = router.Resources();

    EXPECT_EQ((std::set<IResource*>(listed.begin(), listed.end())),
              (std::set<IResource*>{&resources["/controls/:protocol"], &resources["/controls/:protocol/metrics"]}));
    EXPECT_EQ(listed.size(), 2U);
}

TEST_F(ResourceRouterTest, ListsItsRoutes)
{
    EXPECT_TRUE(router.Routes().empty());
    Add("/");
    Add("/controls/:protocol");
    Add("/controls/:protocol/metrics");
    Add("/controls/hardware");
    router.Deregister("/controls/:protocol/metrics", false);

    EXPECT_EQ(router.Routes(), (std::vector<std::string>{"/", "/controls/:key", "/controls/hardware"}));
}

TEST_F(ResourceRouterTest, DecodesSegmentsAfterItHasSplitThePath)
{
    Add("/controls/:protocol");

    ExpectMatch("/controls/a%2Fb%20%c3%A9", "/controls/:protocol", {{"protocol", "a/b \xC3\xA9"}});
    ExpectMatch("/control%73/%", "/controls/:protocol", {{"protocol", "%"}});
    ExpectMatch("/controls/%4", "/controls/:protocol", {{"protocol", "%4"}});
    ExpectMatch("/controls/%-1", "/controls/:protocol", {{"protocol", "%-1"}});
}

TEST_F(ResourceRouterTest, RefusesWhatIsNoRouteOrIsThereAlready)
{
    FakeResource other;
    Add("/controls/:protocol");

    struct Case
    {
        char const* route;
        int32 status;
        char const* text;
    };
    for (Case const& given :
         {Case{"controls", -997, "'controls' is no route"}, Case{"/a//b", -997, "'/a//b' is no route"},
          Case{"/controls/:name", -987, "The route '/controls/:name' is there already"}})
    {
        try
        {
            router.Register(given.route, other);
            ADD_FAILURE() << given.route << " was taken";
        }
        catch (Zu::Exception const& exception)
        {
            EXPECT_EQ(exception.Status(), given.status);
            EXPECT_STREQ(exception.what(), given.text);
        }
    }
    ExpectMatch("/controls/x", "/controls/:protocol", {{"protocol", "x"}});
}

TEST_F(ResourceRouterTest, DeregistersOneRouteOrAllBeneath)
{
    Add("/controls/:protocol");
    Add("/controls/:protocol/metrics");
    Add("/controls/hardware/metrics");
    Add("/health");

    router.Deregister("/controls/:protocol", false);
    ExpectNothing("/controls/x");
    ExpectMatch("/controls/x/metrics", "/controls/:protocol/metrics", {{"protocol", "x"}});
    router.Deregister("/nowhere", true);
    router.Deregister("no route", true);
    router.Deregister("/controls", true);

    ExpectNothing("/controls/x/metrics");
    ExpectNothing("/controls/hardware/metrics");
    ExpectMatch("/health", "/health", {});
    Add("/controls/:protocol");
    ExpectMatch("/controls/x", "/controls/:protocol", {{"protocol", "x"}});
}

TEST_F(ResourceRouterTest, WaitsInDeregisterForTheMatchesThatAreInUse)
{
    Add("/controls/:protocol");
    auto match = router.Find("/controls/x");
    ASSERT_TRUE(match.has_value());

    std::atomic<bool> released{false};
    std::atomic<bool> waited{false};
    std::thread host([&] {
        router.Deregister("/controls", true);
        waited = released.load();
    });
    while (router.Find("/controls/x").has_value()) // until the other thread has taken the route away
    {
        std::this_thread::yield();
    }
    released = true;
    match.reset();
    host.join();

    EXPECT_TRUE(waited);
}

} // namespace ZuRest
