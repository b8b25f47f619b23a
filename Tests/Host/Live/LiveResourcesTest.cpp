#include "Host/Live/LiveResources.h"

#include "Host/Live/RecordingBody.h"
#include "Host/Live/SourceDestinations.h"
#include "Host/Operation/SensorDesk.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace ZuHost
{

using Json = nlohmann::json;

class LiveResourcesTest : public SensorDesk
{
protected:
    ~LiveResourcesTest() override
    {
        module.UsedSensor().Stop();
    }

    /// Lets the sensor take some frames and stop.
    void TakeFrames()
    {
        Sensor& sensor = module.UsedSensor();
        sensor.Start();
        while (sensor.Frames().After(0, 3).size() < 3)
        {
            std::this_thread::yield();
        }
        sensor.Stop();
    }

    std::shared_ptr<RecordingBody> Open(ZuRest::Answer const& answer)
    {
        EXPECT_EQ(answer.status, 200u) << answer.body;
        auto body = std::make_shared<RecordingBody>();
        answer.openBody(body);
        return body;
    }

    ZuRest::Answer AskFor(std::string const& type, std::string const& path, std::string const& query = "",
                          std::string const& method = "GET")
    {
        return Ask(method, path, "", query, type);
    }

    static constexpr char const* EVENTS = "text/event-stream";
    static constexpr char const* BYTES = "application/octet-stream";

    SourceDestinations destinations{module};
    LiveResources resources{module.Router(), module.UsedSensor(), destinations};
};

TEST_F(LiveResourcesTest, ShowTheSourcesBeforeTheFirstFrame)
{
    Json const list = Read("/datasources")["dataSources"];

    ASSERT_EQ(list.size(), 6u);
    EXPECT_EQ(list[0],
              (Json{{"id", "profile/stamp"},
                    {"displayName", "Stamp"},
                    {"description", "The time, the encoder position, the inputs and the number of the profile."},
                    {"type", "Stamp"},
                    {"unit", ""},
                    {"stamp", nullptr},
                    {"frame", nullptr},
                    {"ageSec", nullptr},
                    {"destinations", Json::array()}}));
    EXPECT_EQ(list[1]["id"], "profile/zMax");
    EXPECT_EQ(list[1]["value"], nullptr);
    EXPECT_EQ(list[1]["decision"], nullptr);
    EXPECT_EQ(Read("/datasources")["_links"]["zu:source"][1]["href"], "/datasources/profile%2FzMax");
}

TEST_F(LiveResourcesTest, ShowTheNewestValues)
{
    TakeFrames();

    Json const height = Read("/datasources/profile%2FzMax");
    EXPECT_EQ(height["value"], 25);
    EXPECT_EQ(height["decision"], 1);
    EXPECT_EQ(height["unit"], "mm");
    EXPECT_GE(height["frame"].get<int>(), 2);
    EXPECT_GE(height["ageSec"].get<double>(), 0);
    Json const stamp = Read("/datasources/profile%2Fstamp");
    EXPECT_EQ(stamp["stamp"]["encoder"], stamp["frame"].get<int>() * 10);
    EXPECT_FALSE(stamp.contains("value"));
    EXPECT_EQ(Ask("GET", "/datasources/nothing").status, 404u);
}

TEST_F(LiveResourcesTest, StreamEachNewValueOfASource)
{
    TakeFrames();
    auto const body = Open(AskFor(EVENTS, "/datasources/profile%2FzMax", "rate=20"));

    ASSERT_TRUE(body->parts.WaitFor(": still here\n\n")); // nothing is new for a second

    std::string const event = body->parts.All()[0];
    EXPECT_TRUE(event.starts_with("id: ")) << event;
    EXPECT_NE(event.find("\"value\":25.0}\n\n"), std::string::npos) << event;
    EXPECT_EQ(body->parts.All().size(), 2u);
}

TEST_F(LiveResourcesTest, EndTheStreamOfASourceThatGoesAway)
{
    LiveFeed feed;
    std::atomic<bool> isThere{true};
    DataSourcesResource sources(
        module.UsedSensor().Frames(), feed,
        [&] { return isThere ? DataSources::OfSensor() : std::vector<DataSource>(); }, destinations);
    ZuRest::Request request;
    request.accept = EVENTS;
    auto const body = Open(sources.AnswerFeed(request, {"/x", {{"source", "profile/zMax"}}, false}));

    isThere = false;

    ASSERT_TRUE(body->parts.WaitFor("end"));
    EXPECT_EQ(body->parts.All()[0],
              "event: end\ndata: {\"text\":\"The data source 'profile/zMax' is no longer there.\"}\n\n");
}

TEST_F(LiveResourcesTest, ShowAnEmptyProfileBeforeTheFirstFrame)
{
    Json profile = Read("/profile");
    profile.erase("_links");
    EXPECT_EQ(
        profile,
        (Json{
            {"frame", nullptr}, {"stamp", nullptr}, {"ageSec", nullptr}, {"x", Json::array()}, {"z", Json::array()}}));
    EXPECT_EQ(Read("/rangeimage")["rows"], 0);
}

TEST_F(LiveResourcesTest, ShowProfileAndRangeImage)
{
    TakeFrames();

    Json const profile = Read("/profile", "points=4");
    EXPECT_EQ(profile["x"].size(), 4u);
    EXPECT_EQ(profile["z"].size(), 4u);
    EXPECT_GT(profile["stamp"]["timeUsec"].get<uint64>(), 0u);
    Json const image = Read("/rangeimage", "rows=2&columns=3");
    EXPECT_EQ(image["rows"], 2);
    EXPECT_EQ(image["x0"], -20.0);
    EXPECT_EQ(image["spacing"], 20.0);
    EXPECT_EQ(image["z"], (Json{{25.0, 25.0, 25.0}, {25.0, 25.0, 25.0}}));
    EXPECT_EQ(image["frames"][1], image["frames"][0].get<int>() + 1);
    EXPECT_EQ(Read("/rangeimage", "rows=1&columns=60")["z"][0][30], nullptr); // the slot
}

TEST_F(LiveResourcesTest, StreamProfilesAndRows)
{
    TakeFrames();

    auto const profiles = Open(AskFor(BYTES, "/profile", "points=2"));
    auto const rows = Open(AskFor(BYTES, "/rangeimage", "rows=2&columns=3"));

    ASSERT_TRUE(profiles->parts.WaitFor(LiveMessages::Heartbeat(LiveMessages::Kind::PROFILE)));
    ASSERT_TRUE(rows->parts.WaitFor(LiveMessages::Heartbeat(LiveMessages::Kind::ROWS)));
    EXPECT_EQ(profiles->parts.All()[0].size(), LiveMessages::HEADER_BYTES + 4 * 4);
    EXPECT_EQ(rows->parts.All()[0].size(), LiveMessages::HEADER_BYTES + 6 * 4);
}

TEST_F(LiveResourcesTest, AnswerHeadWithoutAStream)
{
    for (char const* const path : {"/profile", "/rangeimage"})
    {
        ZuRest::Answer const answer = AskFor(BYTES, path, "", "HEAD");
        EXPECT_EQ(answer.status, 200u);
        EXPECT_EQ(answer.contentType, BYTES);
        EXPECT_FALSE(answer.openBody);
    }
}

TEST_F(LiveResourcesTest, RefuseWhatIsNoStreamAndBadNumbers)
{
    EXPECT_EQ(AskFor(EVENTS, "/datasources").status, 404u);
    EXPECT_EQ(AskFor(EVENTS, "/datasources/nothing").status, 404u);
    EXPECT_EQ(AskFor(EVENTS, "/datasources/profile%2FzMax", "rate=0").status, 422u);
    EXPECT_EQ(AskFor(EVENTS, "/datasources/profile%2FzMax", "points=5").status, 422u);
    EXPECT_EQ(AskFor(BYTES, "/profile", "points=1").status, 422u);
    EXPECT_EQ(AskFor(BYTES, "/profile", "rows=1").status, 422u);
    EXPECT_EQ(AskFor(BYTES, "/rangeimage", "columns=0").status, 422u);
    EXPECT_EQ(Ask("GET", "/profile", "", "rate=5").status, 422u);
    EXPECT_EQ(Ask("GET", "/rangeimage", "", "points=5").status, 422u);
}

TEST_F(LiveResourcesTest, RefuseStreamsBeyondTheirNumber)
{
    std::vector<ZuRest::Answer> open;
    for (std::size_t i = 0; i < LiveFeed::MAX_VIEWERS; ++i)
    {
        open.push_back(AskFor(BYTES, "/profile"));
    }

    ZuRest::Answer const refused = AskFor(EVENTS, "/datasources/profile%2FzMax");

    EXPECT_EQ(refused.status, 503u);
    EXPECT_EQ(RefusalIn(refused), "503 There are 64 streams of the sensor already.");
}

} // namespace ZuHost
