#include "Host/Resources/HostResources.h"

#include "Host/Sensor/DeskScanner.h"
#include "Host/Sensor/Sensor.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Support/Refusal.h"
#include "ZuApi/Exception.h"
#include "ZuCommon/Problems.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuScan/ScanEngines.h"

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
    HostResourcesTest()
    {
        scanner.AddTo(scanEngines);
    }

    Json Read(std::string const& path)
    {
        return processor.Read(path, nullptr, "");
    }

    ZuRest::Answer Get(std::string const& path)
    {
        ZuRest::Request request;
        request.path = path;
        return processor.Process(request).answer;
    }

    ZuCore::ResultHub hub{true};
    Sensor sensor{hub, std::make_unique<SimulatedPart>(), 50};
    DeskScanner scanner{sensor};
    ZuScan::Internal::ScanEngineManager scanEngines;
    ZuCommon::ProblemsManager problems;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router, HostResources::RELATION_TEMPLATE};
};

TEST_F(HostResourcesTest, TellsThatItIsThere)
{
    HostResources const resources(router, problems, scanEngines);

    EXPECT_EQ(Read("/health").at("status"), "ok");
    EXPECT_EQ(Read("/health").at("faults"), Json::array());
    EXPECT_LT(Read("/health").at("upTimeSec").get<uint64>(), 60U);
    ZuRest::Request request;
    request.path = "/health";
    EXPECT_EQ(Json::parse(processor.ProcessPrompt(request).value().answer.body).at("status"), "ok");
}

TEST_F(HostResourcesTest, TellsWhatHasDiedOrStandsStill)
{
    std::vector<std::string> faults{"the first one stands.", "so does the second."};
    HostResources const resources(router, problems, scanEngines, [&faults] { return faults; });

    EXPECT_EQ(Read("/health").at("status"), "faulty");
    EXPECT_EQ(Read("/health").at("faults"), (Json{"the first one stands.", "so does the second."}));
    EXPECT_EQ(Get("/health").status, 200U); // the service itself works

    faults.clear();
    EXPECT_EQ(Read("/health").at("status"), "ok");
}

TEST_F(HostResourcesTest, ShowsTheProblemsThatStand)
{
    HostResources const resources(router, problems, scanEngines);
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
        HostResources const resources(router, problems, scanEngines);
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

TEST_F(HostResourcesTest, LinksWhatThereIsFromItsRoot)
{
    HealthResource other;
    router.Register("/controls/:protocol/metrics", other);
    router.Register("/jobs/:name", other);
    {
        HostResources const resources(router, problems, scanEngines);

        Json const root = Read("/");

        EXPECT_EQ(root.at("product"), "ZuControl");
        EXPECT_EQ(root.at("_links"), Json::parse(R"({
            "self": {"href": "/"},
            "curies": [{"name": "zu", "href": "/relations/{rel}", "templated": true}],
            "zu:jobs": {"href": "/jobs"},
            "zu:scanners": {"href": "/scanners"},
            "zu:health": {"href": "/health"},
            "zu:problems": {"href": "/problems"},
            "zu:events": {"href": "/events"},
            "zu:relations": {"href": "/relations"},
            "zu:metrics": {"href": "/controls/{protocol}/metrics", "templated": true},
            "zu:schema": {"href": "{+path}?schema=true", "templated": true}})"));
    }
    router.Deregister("/controls", true);
    router.Deregister("/jobs", true);
}

TEST_F(HostResourcesTest, TellsWhatEveryRelationOfItsRootMeans)
{
    HostResources const resources(router, problems, scanEngines);
    Json const links = Read("/").at("_links");

    for (auto const& [key, link] : links.items())
    {
        if (key.starts_with("zu:"))
        {
            ZuRest::Answer const page = Get("/relations/" + key.substr(3));
            EXPECT_EQ(page.status, 200U) << key;
            EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
            EXPECT_NE(page.body.find("<code>" + key + "</code>"), std::string::npos) << page.body;
            EXPECT_NE(Get("/relations").body.find("<code>" + key + "</code>"), std::string::npos) << key;
        }
    }
    EXPECT_EQ(Get("/relations/:scanner").status, 200U);
    EXPECT_EQ(Get("/relations/%3Cb%3E").status, 404U);
}

TEST_F(HostResourcesTest, NamesTheRequestsOfARelation)
{
    HostResources const resources(router, problems, scanEngines);

    std::string const jobs = Get("/relations/job").body;

    EXPECT_NE(jobs.find("<li><code>GET /jobs/:name</code>: the file of a job (viewer)</li>"), std::string::npos)
        << jobs;
    EXPECT_NE(jobs.find("<li><code>DELETE /jobs/:name</code>: deletes a job (engineer)</li>"), std::string::npos);
    EXPECT_EQ(jobs.find("/jobs/:name/load"), std::string::npos) << "a request of another relation";
    EXPECT_NE(jobs.find("<a href=\"/openapi.json\">"), std::string::npos);
    EXPECT_EQ(Get("/relations/schema").body.find("<li>"), std::string::npos) << "of any resource";
}

TEST_F(HostResourcesTest, ShowsTheScannersByIdAndByNumber)
{
    HostResources const resources(router, problems, scanEngines);

    Json const all = Read("/scanners");
    Json const one = Read("/scanners/scanner-0");
    Json const first = Read("/scanners/0");

    EXPECT_EQ(all.at("_embedded").at("item").size(), 1U);
    EXPECT_EQ(one.at("_links").at("self").at("href"), "/scanners/scanner-0");
    EXPECT_EQ(first.at("id"), "scanner-0");
    for (Json const& scannerDocument : {all.at("_embedded").at("item").at(0), one, first})
    {
        EXPECT_EQ(scannerDocument.at("present"), true);
        EXPECT_EQ(scannerDocument.at("engine"), "engine-0");
        EXPECT_EQ(scannerDocument.at("sensors"), Json::array({"sensor-0"}));
        EXPECT_EQ(scannerDocument.at("actions"), Json::array({"trigger", "scannerInfo"}));
        EXPECT_EQ(scannerDocument.at("alignment"), "notAligned");
        EXPECT_EQ(scannerDocument.at("info").at("laserEnabled"), false);
        EXPECT_EQ(scannerDocument.at("info").at("currentEncoderValue"), 0);
    }
}

TEST_F(HostResourcesTest, ShowsThatTheSecondDeviceHasNoScannerHere)
{
    HostResources const resources(router, problems, scanEngines);

    EXPECT_EQ(Read("/scanners/1"), Json::parse(R"({"id": "1", "present": false,
        "_links": {"self": {"href": "/scanners/1"}}})"));
    EXPECT_EQ(ZuTest::RefusalOf([&] { Read("/scanners/2"); }), (ZuTest::Refusal{-999, "There is no scanner '2'."}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { Read("/scanners/00"); }), (ZuTest::Refusal{-999, "There is no scanner '00'."}));
}

TEST_F(HostResourcesTest, TakesItsRoutesAway)
{
    {
        HostResources const resources(router, problems, scanEngines);
    }

    EXPECT_TRUE(router.Resources().empty());
}

} // namespace ZuHost
