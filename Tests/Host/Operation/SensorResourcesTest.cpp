#include "Host/Operation/SensorResources.h"

#include "Host/Operation/SensorDesk.h"
#include "Support/Latch.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using Json = nlohmann::json;

class SensorResourcesTest : public SensorDesk
{
protected:
    SensorResourcesTest()
    {
        changes = commands.ChangedSignal().Subscribe(
            [this](uint64 number) { calls.Add("changed " + std::to_string(number)); });
    }

    /// Runs a command and waits for its end.
    Json Run(std::string const& command, std::string const& body = "")
    {
        ZuRest::Answer const answer = Ask("POST", "/sensor/commands/" + command, body);
        EXPECT_EQ(answer.status, 202u) << answer.body;
        return Ended(answer);
    }

    Json Ended(ZuRest::Answer const& answer)
    {
        Json const begun = Json::parse(answer.body);
        EXPECT_TRUE(calls.WaitFor("changed " + begun["number"].dump(), 2));
        return Read("/operations/" + begun["number"].dump());
    }

    SensorCommands commands{module.Module(), module.ScanEngines(), authority, trail};
    SensorResources resources{{module, jobs, commands, settings, authority}};
    Zu::Subscription changes;
};

TEST_F(SensorResourcesTest, ShowTheStateOfTheSensor)
{
    Json const sensor = Read("/sensor");

    EXPECT_EQ(sensor["state"], "ready");
    EXPECT_EQ(sensor["job"], "");
    EXPECT_EQ(sensor["scanner"], "scanner-0");
    EXPECT_EQ(sensor["alignment"], "notAligned");
    EXPECT_GE(sensor["upTimeSec"].get<int>(), 0);
    EXPECT_EQ(sensor["profiles"], (Json{{"setRateHz", 1000.0}, {"rateHz", 0.0}, {"taken", 0}, {"missed", 0}}));
    EXPECT_EQ(sensor["results"],
              (Json{{"sets", 0},
                    {"dropped", 0},
                    {"protocols", {{{"id", "Plc"}, {"enabled", false}, {"sets", 0}, {"dropped", nullptr}}}}}));
    EXPECT_EQ(sensor["operation"], nullptr);
    EXPECT_EQ(sensor["authority"], (Json{{"rest", "always"},
                                         {"holder", "everybody"},
                                         {"mayCommand", true},
                                         {"waitSeconds", 0.0},
                                         {"lastCommand", nullptr}}));
    EXPECT_EQ(sensor["outputs"]["analog"][1], (Json{{"index", 1}, {"enabled", true}, {"milliamperes", 4.0}}));
    EXPECT_EQ(sensor["outputs"]["digital"][0],
              (Json{{"index", 0}, {"enabled", true}, {"high", false}, {"pulses", 0}, {"pulseAgeSec", nullptr}}));
    EXPECT_EQ(sensor["outputs"]["serial"][0], (Json{{"index", 0}, {"enabled", true}, {"bytes", 0}, {"last", ""}}));
    EXPECT_EQ(sensor["inputs"].size(), 2u);
}

TEST_F(SensorResourcesTest, ShowWhatTheOutputsDrive)
{
    DeskIo& io = module.UsedSensor().Io();
    io.UseDigitalOutput(1, [](DeskDigitalOutput& output, uint64) { output.SetState(true); });
    io.UseAnalogOutput(0, [](DeskAnalogOutput& output, uint64 now) { output.Enqueue(12.5, now); });
    io.UseSerialOutput(0, [](DeskSerialOutput& output) {
        output.Write(3, "a\x80"
                        "b");
    });

    Json const sensor = Read("/sensor");

    EXPECT_TRUE(sensor["outputs"]["digital"][1]["high"]);
    EXPECT_TRUE(sensor["inputs"][1]["high"]); // it is wired to the output
    EXPECT_EQ(sensor["outputs"]["analog"][0]["milliamperes"], 12.5);
    EXPECT_EQ(sensor["outputs"]["serial"][0]["bytes"], 3);
    EXPECT_EQ(sensor["outputs"]["serial"][0]["last"], "a?b");
}

TEST_F(SensorResourcesTest, ShowPulsesThatAreOver)
{
    DeskIo& io = module.UsedSensor().Io();
    for (int i = 0; i < 2; ++i)
    {
        io.UseDigitalOutput(0, [](DeskDigitalOutput& output, uint64 nowUsec) { output.Trigger(nowUsec); });
    }
    io.UseDigitalOutput(0, [](DeskDigitalOutput& output, uint64) { output.Clear(); });

    Json const outputs = Read("/sensor")["outputs"]["digital"];

    EXPECT_FALSE(outputs[0]["high"]);
    EXPECT_EQ(outputs[0]["pulses"], 2);
    EXPECT_GE(outputs[0]["pulseAgeSec"].get<double>(), 0);
    EXPECT_EQ(outputs[1]["pulses"], 0);
}

TEST_F(SensorResourcesTest, RunTheSensor)
{
    EXPECT_EQ(Run("start")["result"], "done");
    EXPECT_EQ(Read("/sensor")["state"], "running");
    EXPECT_EQ(Run("trigger")["result"], "done");
    EXPECT_EQ(Run("align", R"({"scanner": "scanner-0"})")["result"], "done");
    EXPECT_EQ(Read("/sensor")["alignment"], "aligned");
    EXPECT_EQ(Run("clearAlignment")["result"], "done");
    EXPECT_EQ(Read("/sensor")["alignment"], "notAligned");
    EXPECT_EQ(Run("load", R"({"parameters": {"job": "line 2"}})")["result"], "done");
    EXPECT_EQ(Read("/sensor")["job"], "line 2");
    EXPECT_EQ(Run("stop")["result"], "done");
    EXPECT_EQ(Read("/sensor")["state"], "ready");
}

TEST_F(SensorResourcesTest, AnswerACommandWithItsOperation)
{
    ZuRest::Answer const answer = Ask("POST", "/sensor/commands/start");

    EXPECT_EQ(answer.status, 202u);
    EXPECT_EQ(answer.headers.at(0), (std::pair<std::string, std::string>{"Location", "/operations/1"}));
    Json const operation = Ended(answer);
    EXPECT_EQ(operation["number"], 1);
    EXPECT_EQ(operation["what"], "scan start");
    EXPECT_EQ(operation["argument"], "");
    EXPECT_EQ(operation["who"], "user anna");
    EXPECT_EQ(operation["from"], "https 192.0.2.7");
    EXPECT_EQ(operation["status"], 1);
    EXPECT_EQ(operation["text"], "");
    EXPECT_GE(operation["seconds"].get<double>(), 0);
    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{"user anna | https 192.0.2.7 | scan start |  |  | done"}));
}

TEST_F(SensorResourcesTest, TellWhyAnOperationHasFailed)
{
    Json const trigger = Run("trigger"); // the sensor does not scan
    EXPECT_EQ(trigger["result"], "failed");
    EXPECT_EQ(trigger["status"], -1000);
    EXPECT_EQ(trigger["text"], "The sensor takes a trigger only while it scans");
    EXPECT_TRUE(trail.Lines().empty()); // triggers come too often for the trail

    Json const load = Run("load", R"({"job": "nowhere"})");
    EXPECT_EQ(load["result"], "failed");
    EXPECT_EQ(load["status"], -999);
    EXPECT_EQ(load["argument"], "nowhere");
    EXPECT_EQ(trail.Lines(),
              (std::vector<std::string>{"user anna | https 192.0.2.7 | job load nowhere |  |  | failed"}));
}

TEST_F(SensorResourcesTest, RefuseACommandWhileAnotherOperationRuns)
{
    ZuTest::Latch entered;
    ZuTest::Latch release;
    jobs.onLoad = [&] {
        entered.Open();
        release.Wait();
    };
    ZuRest::Answer const first = Ask("POST", "/sensor/commands/load", R"({"job": "line 1"})");
    ASSERT_TRUE(entered.Wait());

    ZuRest::Answer const second = Ask("POST", "/sensor/commands/stop");

    EXPECT_EQ(second.status, 503u);
    EXPECT_EQ(second.headers.at(0), (std::pair<std::string, std::string>{"Retry-After", "1"}));
    EXPECT_EQ(Read("/sensor")["operation"]["what"], "job load");
    EXPECT_EQ(Read("/sensor")["operation"]["protocol"], nullptr);
    EXPECT_EQ(Read("/operations")["operations"].size(), 1u);
    EXPECT_EQ(Read("/operations/1")["result"], "running");
    EXPECT_EQ(Read("/operations/1")["status"], nullptr);
    release.Open();
    EXPECT_EQ(Ended(first)["result"], "done");
}

TEST_F(SensorResourcesTest, ShareTheTurnWithProtocols)
{
    ZuTest::Latch entered;
    ZuTest::Latch release;
    jobs.onLoad = [&] {
        entered.Open();
        release.Wait();
    };
    operations->LoadJob(PLC, "line 1");
    ASSERT_TRUE(entered.Wait());

    EXPECT_EQ(Ask("POST", "/sensor/commands/start").status, 503u);
    EXPECT_EQ(Read("/sensor")["operation"]["protocol"], "Plc");

    release.Open();
    ASSERT_TRUE(calls.WaitFor("changed 2")); // the refused command took the number 1
    Json const operation = Read("/operations/2");
    EXPECT_EQ(operation["what"], "job load");
    EXPECT_EQ(operation["argument"], "line 1");
    EXPECT_EQ(operation["who"], "Plc");
    EXPECT_EQ(operation["from"], "");
    EXPECT_EQ(operation["result"], "done");
}

TEST_F(SensorResourcesTest, LeaveTriggersOfProtocolsOut)
{
    auto const ends = operations->SubscribeToOperationEnd(PLC, [this](int) { calls.Add("ended"); });
    operations->SoftwareTrigger(PLC, "");
    ASSERT_TRUE(calls.WaitFor("ended"));

    EXPECT_EQ(Ended(Ask("POST", "/sensor/commands/start"))["number"], 1);
    EXPECT_EQ(Read("/operations")["operations"].size(), 1u);
}

TEST_F(SensorResourcesTest, RefuseCommandsWithoutAuthority)
{
    settings.ChangeAuthority({{"rest", 2}});
    EXPECT_EQ(RefusalIn(Ask("POST", "/sensor/commands/start")),
              "409 REST may not run the sensor: only the protocols may.");
    EXPECT_EQ(Read("/sensor")["authority"]["holder"], "protocols");
    EXPECT_EQ(Read("/sensor")["authority"]["waitSeconds"], nullptr);

    settings.ChangeAuthority({{"rest", 1}, {"idleSeconds", 3600}});
    EXPECT_EQ(Run("start")["result"], "done"); // no protocol has sent a command
    operations->StopScan(PLC);
    ASSERT_TRUE(calls.WaitFor("changed 2"));
    EXPECT_EQ(RefusalIn(Ask("POST", "/sensor/commands/start")),
              "409 REST may not run the sensor now: Plc has sent a command less than 3600 seconds ago.");
    Json const shown = Read("/sensor")["authority"];
    EXPECT_EQ(shown["holder"], "Plc");
    EXPECT_EQ(shown["rest"], "whenIdle");
    EXPECT_FALSE(shown["mayCommand"]);
    EXPECT_GT(shown["waitSeconds"].get<double>(), 3000);
    EXPECT_EQ(shown["lastCommand"]["protocol"], "Plc");
    EXPECT_EQ(Read("/operations")["operations"].size(), 2u);
}

TEST_F(SensorResourcesTest, CountAnOperationInFlightAsACommandOfItsProtocol)
{
    settings.ChangeAuthority({{"rest", 1}, {"idleSeconds", 3600}});
    ZuTest::Latch entered;
    ZuTest::Latch release;
    jobs.onLoad = [&] {
        entered.Open();
        release.Wait();
    };
    operations->LoadJob(PLC, "line 1");
    ASSERT_TRUE(entered.Wait());

    EXPECT_EQ(Ask("POST", "/sensor/commands/start").status, 409u);
    EXPECT_EQ(Read("/sensor")["authority"]["holder"], "Plc");
    release.Open();
    EXPECT_TRUE(calls.WaitFor("changed 1"));
}

TEST_F(SensorResourcesTest, RefuseParametersThatACommandDoesNotHave)
{
    struct Case
    {
        char const* command;
        char const* body;
        char const* refusal;
    };
    for (Case const& tested : {
             Case{"start", R"({"scanner": ""})", "422 The command 'start' has no parameter 'scanner'."},
             Case{"align", R"({"job": "a"})", "422 The command 'align' has no parameter 'job'."},
             Case{"align", R"({"scanner": 7})", "422 The parameter 'scanner' is a text."},
             Case{"align", R"({"scanner": "scanner-9"})", "422 There is no scanner 'scanner-9'."},
             Case{"load", R"([])", "422 The parameters of a command are an object."},
             Case{"load", "", "422 Empty job name for action 4"},
             Case{"fly", "", "404 The sensor has no command 'fly'."},
         })
    {
        EXPECT_EQ(RefusalIn(Ask("POST", std::string("/sensor/commands/") + tested.command, tested.body)),
                  tested.refusal);
    }
    EXPECT_EQ(Ask("POST", "/sensor/commands/load", "{").status, 400u);
    EXPECT_EQ(Ask("POST", "/sensor/commands").status, 405u);
    EXPECT_TRUE(Read("/operations")["operations"].empty());
}

TEST_F(SensorResourcesTest, ShowTheCommandsWithTheirParameters)
{
    EXPECT_EQ(Read("/sensor/commands")["_embedded"]["item"].size(), 6u);
    EXPECT_EQ(Read("/sensor/commands/start")["parameters"], Json::object());
    EXPECT_EQ(Read("/sensor/commands/align")["parameters"], (Json{{"scanner", ""}}));
    Json const load = Read("/sensor/commands/load", "schema=true");
    EXPECT_EQ(load["id"], "load");
    EXPECT_EQ(load["_schema"]["properties"]["parameters"]["properties"]["job"]["type"], "string");
    EXPECT_EQ(Ask("GET", "/sensor/commands/fly").status, 404u);
}

TEST_F(SensorResourcesTest, KnowTheLastOperationsOnly)
{
    for (char const* const number : {"1", "0", "x", "1x", "99999999999999999999", ""})
    {
        EXPECT_EQ(Ask("GET", std::string("/operations/") + number).status, 404u) << number;
    }
}

TEST_F(SensorResourcesTest, ChangeAuthorityAndLimits)
{
    EXPECT_EQ(Read("/sensor/authority")["idleSeconds"], 10);
    EXPECT_EQ(Ask("PUT", "/sensor/authority", R"({"rest": 2})").status, 200u);
    EXPECT_EQ(authority.Get().rest, RestAuthority::NEVER);
    EXPECT_EQ(Ask("PUT", "/sensor/authority", R"({"rest": 5})").status, 422u);
    EXPECT_EQ(Read("/sensor/authority", "schema=true")["_schema"]["properties"]["rest"]["enumText"],
              (Json{"Always", "While No Protocol Sends Commands", "Never"}));

    ZuRest::Answer const changed = Ask("PATCH", "/sensor/limits", R"({"zMax": {"enabled": true, "maximum": 9}})");
    EXPECT_EQ(changed.status, 200u);
    EXPECT_EQ(Json::parse(changed.body)["zMax"], (Json{{"enabled", true}, {"minimum", 0.0}, {"maximum", 9.0}}));
    EXPECT_EQ(Ask("PUT", "/sensor/limits", R"({"zMax": {"maximum": -1}})").status, 422u);
    EXPECT_EQ(Ask("PUT", "/sensor/limits", R"({"zMax": {"maximum": "x"}})").status, 400u);
    Json const schema = Read("/sensor/limits", "schema=true")["_schema"]["properties"]["zMax"];
    EXPECT_EQ(schema["title"], "Largest Height");
    EXPECT_EQ(schema["properties"]["maximum"]["units"], "mm");
}

TEST_F(SensorResourcesTest, NotifyClientsOfBeginAndEnd)
{
    ZuTest::CallLog told;
    auto const match = module.Router().Find("/operations");
    auto const subscription = match->resource->NotificationEvent().Subscribe(
        [&](ZuRest::IResource&, ZuRest::EventType, std::string const& path) { told.Add(path); });

    Run("start");

    EXPECT_EQ(told.All(), (ZuTest::CallLog::Calls{"/operations/1", "/operations/1"}));
}

} // namespace ZuHost
