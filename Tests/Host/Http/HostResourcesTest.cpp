#include "Host/Http/HostResources.h"

#include "ZuApi/Exception.h"
#include "ZuCommon/ProblemsManager.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <regex>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

class KeepingReceiver final : public ZuRest::IStreamReceiver
{
public:
    void Receive(Json const& report) override
    {
        if (isBroken)
        {
            throw std::runtime_error("gone");
        }
        reports.push_back(report);
    }

    bool isBroken = false;
    std::vector<Json> reports;
};

} // namespace

class HostResourcesTest : public testing::Test
{
protected:
    Json Read(std::string const& path)
    {
        return processor.Read(path, nullptr, "");
    }

    ZuCommon::ProblemsManager problems;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
};

TEST_F(HostResourcesTest, TellsThatItIsThere)
{
    HostResources const resources(router, problems);

    EXPECT_EQ(Read("/health").at("status"), "ok");
    EXPECT_LT(Read("/health").at("upTimeSec").get<uint64>(), 60U);
}

TEST_F(HostResourcesTest, ShowsTheProblemsThatStand)
{
    HostResources const resources(router, problems);
    problems.Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, "Modbus TCP", "no results for %1$u s", 5U);
    auto const gone = problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "other", nullptr);
    problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "Modbus TCP", "port taken");
    problems.Remove(gone);

    Json const shown = Read("/problems").at("problems");

    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown.at(0).at("severity"), "warning");
    EXPECT_EQ(shown.at(0).at("source"), "Modbus TCP");
    EXPECT_EQ(shown.at(0).at("text"), "no results for 5 s");
    EXPECT_TRUE(std::regex_match(shown.at(0).at("since").get<std::string>(),
                                 std::regex(R"(20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d\d\dZ)")));
    EXPECT_EQ(shown.at(1).at("severity"), "error");
}

TEST_F(HostResourcesTest, TellsItsClientsWhatTheResourcesNotify)
{
    HealthResource other;
    router.Register("/other/:key", other);
    router.Register("/other", other);
    KeepingReceiver first;
    KeepingReceiver broken;
    KeepingReceiver second;
    broken.isBroken = true;
    {
        HostResources const resources(router, problems);
        auto* const events = router.Find("/events")->resource->StreamableProvider();
        ASSERT_NE(events, nullptr);
        ZuRest::RequestInfo const request("/events", {}, false);
        auto const firstId = events->StartStream(&first, request);
        events->StartStream(&broken, request);
        events->StartStream(&second, request);

        other.NotificationEvent().Fire(other, ZuRest::EventType::CHANGED, "/other/1");
        events->StopStream(firstId);
        EXPECT_THROW(events->StopStream(firstId), Zu::Exception);
        other.NotificationEvent().Fire(other, ZuRest::EventType::TREE_CHANGED, "/other");
    }
    other.NotificationEvent().Fire(other, ZuRest::EventType::CHANGED, "/late");

    Json const change = Json::parse(R"({"type": 2, "path": "/other/1"})");
    EXPECT_EQ(first.reports, std::vector<Json>{change});
    EXPECT_EQ(second.reports, (std::vector<Json>{change, Json::parse(R"({"type": 4, "path": "/other"})")}));
    router.Deregister("/other", true);
}

TEST_F(HostResourcesTest, TakesItsRoutesAway)
{
    {
        HostResources const resources(router, problems);
    }

    EXPECT_TRUE(router.Resources().empty());
}

} // namespace ZuHost
