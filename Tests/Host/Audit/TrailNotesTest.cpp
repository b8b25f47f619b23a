#include "Host/Audit/TrailNotes.h"

#include "Host/Audit/Sha256.h"
#include "Support/RecordingTrail.h"
#include "Support/ScratchFolder.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuRest/Caller.h"

#include <gtest/gtest.h>

namespace ZuHost::TrailNotes
{

namespace
{

using ZuTest::RecordingTrail;

std::string LineOf(std::optional<TrailEntry> const& entry)
{
    return entry.has_value() ? RecordingTrail::LineOf(*entry) : "none";
}

std::string OfRequest(ZuRest::Request const& request, ZuRest::Answer const& answer, std::string const& before)
{
    return LineOf(OfChange({request, answer, before}));
}

ZuRest::Request RequestOf(std::string method, std::string path, std::string body)
{
    ZuRest::Request request;
    request.method = std::move(method);
    request.path = std::move(path);
    request.body = std::move(body);
    ZuRest::Caller caller;
    caller.name = "user anna";
    caller.source = "https 192.0.2.7";
    request.caller = std::make_shared<ZuRest::Caller const>(caller);
    return request;
}

ZuRest::Answer AnswerOf(uint32 status, std::string body = {})
{
    return {status, "", std::move(body), {}};
}

} // namespace

TEST(TrailNotesOfChanges, ShowTheMembersThatDiffer)
{
    EXPECT_EQ(OfRequest(RequestOf("PUT", "/controls/a", R"({"x":2,"y":1})"), AnswerOf(200, R"({"x":2,"y":1})"),
                        R"({"x":1,"y":1})"),
              R"(user anna | https 192.0.2.7 | PUT /controls/a | {"x":1} | {"x":2} | 200)");
}

TEST(TrailNotesOfChanges, ShowTheBodyOfOtherRequests)
{
    EXPECT_EQ(OfRequest(RequestOf("POST", "/jobs/a/load", R"({"password":"p","b":1})"), AnswerOf(204), ""),
              R"(user anna | https 192.0.2.7 | POST /jobs/a/load |  | {"b":1,"password":"***"} | 204)");
    EXPECT_EQ(OfRequest(RequestOf("DELETE", "/jobs/a", ""), AnswerOf(204), ""),
              "user anna | https 192.0.2.7 | DELETE /jobs/a |  |  | 204");
}

TEST(TrailNotesOfChanges, ShowWhyARequestWasRefused)
{
    EXPECT_EQ(OfRequest(RequestOf("PUT", "/controls/a", R"({"x":9})"), AnswerOf(422, R"({"detail":"x is above 5"})"),
                        R"({"x":1})"),
              R"(user anna | https 192.0.2.7 | PUT /controls/a |  | {"x":9} | 422 x is above 5)");
    EXPECT_EQ(OfRequest(RequestOf("PUT", "/controls/a", ""), AnswerOf(400, "no JSON"), ""),
              "user anna | https 192.0.2.7 | PUT /controls/a |  |  | 400");
}

TEST(TrailNotesOfChanges, DoNotCompareLargeDocuments)
{
    std::string const large = R"({"x":")" + std::string(200'000, 'x') + R"("})";
    EXPECT_EQ(OfRequest(RequestOf("PUT", "/controls/a", R"({"y":1})"), AnswerOf(200, large), large),
              R"(user anna | https 192.0.2.7 | PUT /controls/a |  | {"y":1} | 200)");
}

TEST(TrailNotesOfChanges, NameNoCallerThatIsNotKnown)
{
    ZuRest::Request request = RequestOf("POST", "/jobs/a/save", "");
    request.caller.reset();
    EXPECT_EQ(OfRequest(request, AnswerOf(204), ""), "unknown | http | POST /jobs/a/save |  |  | 204");
}

TEST(TrailNotesOfChanges, LeaveLoginsToTheirOwnEntries)
{
    EXPECT_EQ(OfRequest(RequestOf("POST", "/sessions", ""), AnswerOf(200), ""), "none");
    EXPECT_EQ(OfRequest(RequestOf("DELETE", "/sessions/1", ""), AnswerOf(204), ""), "none");
    EXPECT_EQ(OfRequest(RequestOf("PATCH", "/users/anna", ""), AnswerOf(204), ""), "none");
    EXPECT_EQ(OfRequest(RequestOf("POST", "/setup", ""), AnswerOf(201), ""), "none");
    EXPECT_NE(OfRequest(RequestOf("POST", "/sessionsx", ""), AnswerOf(404), ""), "none");
}

TEST(TrailNotesOfChanges, GatherUpdatesAndRefusalsAlone)
{
    ZuRest::Request const request = RequestOf("PUT", "/controls/a", "{}");
    std::string const before = "{}";
    std::string const none;
    EXPECT_TRUE(OfChange({request, AnswerOf(200, "{}"), before})->comesInBursts);
    EXPECT_TRUE(OfChange({request, AnswerOf(422), none})->comesInBursts);
    EXPECT_FALSE(OfChange({RequestOf("POST", "/tokens", "{}"), AnswerOf(201), none})->comesInBursts);
}

TEST(TrailNotesOfOperations, NameProtocolCommandAndResult)
{
    EXPECT_EQ(LineOf(OfOperation({"ModbusTcp", "scan start", "", 1})), "ModbusTcp |  | scan start |  |  | done");
    EXPECT_EQ(LineOf(OfOperation({"ModbusTcp", "job load", "a job", 0})),
              "ModbusTcp |  | job load a job |  |  | failed");
    EXPECT_EQ(LineOf(OfOperation({"", "alignment", "scanner-0", -976})),
              "unknown protocol |  | alignment scanner-0 |  |  | refused: another operation was in progress");
    EXPECT_EQ(LineOf(OfOperation({"ModbusTcp", "software trigger", "", 1})), "none");
    EXPECT_EQ(LineOf(OfOperation({"", "scan start", "", 1, {}, true})), "none");
    EXPECT_TRUE(OfOperation({"ModbusTcp", "scan start", "", 1})->comesInBursts);
}

TEST(TrailNotesOfOperations, NameTheAddressAndTheRoleOfTheClient)
{
    using ZuCommon::Role;
    EXPECT_EQ(LineOf(OfOperation({"ModbusTcp", "scan start", "", 1, {"192.0.2.9", Role::OPERATOR}})),
              "ModbusTcp | ModbusTcp 192.0.2.9 as operator | scan start |  |  | done");
    EXPECT_EQ(LineOf(OfOperation({"AsciiTcp", "scan stop", "", -976, {"fd00::7", Role::NONE}})),
              "AsciiTcp | AsciiTcp fd00::7 | scan stop |  |  | refused: another operation was in progress");
}

TEST(TrailNotesOfRefusals, NameTheClientAndTheReason)
{
    using ZuCommon::Role;
    EXPECT_EQ(LineOf(OfRefusal({"ModbusTcp", {"192.0.2.9", Role::VIEWER}, "function 6", "it may not"})),
              "ModbusTcp | ModbusTcp 192.0.2.9 as viewer | function 6 |  |  | refused: it may not");
    EXPECT_EQ(LineOf(OfRefusal({"", {"192.0.2.9", Role::NONE}, "connection", "it may not connect"})),
              "unknown protocol | unknown protocol 192.0.2.9 | connection |  |  | refused: it may not connect");
}

TEST(TrailNotesOfTheHost, ShowItsOptionsWithoutSecrets)
{
    std::string const line = RecordingTrail::LineOf(
        OfStart({"zucontrol-host", "--token", "/etc/token", "--param", "Mqtt.password=p1", "--param", "A.port=1"}));
    EXPECT_TRUE(line.starts_with(R"(host |  | start |  | {"options":["--token","/etc/token","--param",)"
                                 R"("Mqtt.password=***","--param","A.port=1"],"version":"1.)"))
        << line;
    EXPECT_TRUE(line.ends_with("| done"));
}

TEST(TrailNotesOfTheHost, TellItsStopOnce)
{
    RecordingTrail trail;
    {
        TrailNotes::Run run(trail, {"zucontrol-host"});
        run.Stopped();
    }
    ASSERT_EQ(trail.Lines().size(), 2u);
    EXPECT_EQ(trail.Lines()[1], "host |  | stop |  |  | done");
    trail.Clear();
    {
        TrailNotes::Run const run(trail, {"zucontrol-host"});
    }
    ASSERT_EQ(trail.Lines().size(), 2u);
    EXPECT_EQ(trail.Lines()[1], "host |  | stop |  |  | failed");
}

TEST(TrailNotesOfPlugins, HaveTheHashOfTheLoadedBytes)
{
    ZuTest::ScratchFolder const folder;
    ZuTest::WriteBytes(folder / "copy", "abc");
    EXPECT_EQ(RecordingTrail::LineOf(OfPlugin("/plugins/x.so", folder / "copy")),
              "host |  | plug-in x.so |  | {\"bytes\":3,\"file\":\"/plugins/x.so\",\"sha256\":\"" + Sha256Hex("abc") +
                  "\"} | loaded");
    EXPECT_EQ(RecordingTrail::LineOf(OfRefusedPlugin("/plugins/x.so", "it is no plug-in")),
              "host |  | plug-in x.so |  |  | refused: it is no plug-in");
}

} // namespace ZuHost::TrailNotes
