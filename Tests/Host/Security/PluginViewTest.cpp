#include "Host/Security/PluginView.h"
#include "Host/Security/RouteTable.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace ZuHost
{

/// Shows each resource as its own path.
class FakeProcessor final : public ZuRest::RequestProcessor
{
public:
    nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) override
    {
        calls.push_back(path + " " + request.dump() + " " + query);
        return path;
    }

    std::vector<std::string> calls;
};

class PluginViewTest : public testing::Test
{
protected:
    bool Shows(std::string const& path)
    {
        return ZuTest::RefusalOf([&] { view.Read(path, nullptr, ""); }).status == Zu::Status::SUCCESS;
    }

    FakeProcessor processor;
    PluginView view{processor};
};

TEST_F(PluginViewTest, ReadsWhatAViewerMayRead)
{
    EXPECT_EQ(view.Read("/controls/AsciiTcp", {{"a", 1}}, "b=2"), "/controls/AsciiTcp");

    EXPECT_EQ(processor.calls, std::vector<std::string>{R"(/controls/AsciiTcp {"a":1} b=2)"});
}

TEST_F(PluginViewTest, ShowsEachRouteByItsRole)
{
    std::size_t shown = 0;
    for (RouteTable::Route const& route : RouteTable::All())
    {
        if (std::string_view(route.method) == "GET")
        {
            EXPECT_EQ(Shows(route.path), route.role <= ZuCommon::Role::VIEWER) << route.path;
            ++shown;
        }
    }
    EXPECT_GT(shown, 10u);
}

TEST_F(PluginViewTest, RefusesAResourceThatIsNotInTheTable)
{
    EXPECT_EQ(ZuTest::RefusalOf([&] { view.Read("/nowhere/secret", nullptr, ""); }),
              (ZuTest::Refusal{-999, "Plug-ins read no /nowhere/secret"}));

    EXPECT_TRUE(processor.calls.empty());
}

} // namespace ZuHost
