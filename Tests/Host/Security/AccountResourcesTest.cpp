#include "Host/Security/AccountResources.h"

#include "Host/Http/IGatekeeper.h"
#include "Host/Security/AccountsFixture.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <nlohmann/json.hpp>

#include <thread>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuCommon::Role;
using ZuRest::Answer;
using ZuRest::Caller;

} // namespace

class AccountResourcesTest : public AccountsFixture
{
protected:
    Answer Send(Caller const& caller, std::string const& method, std::string const& path, Json const& body = nullptr,
                std::string const& ifMatch = {})
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body.is_null() ? "" : body.dump();
        request.ifMatch = ifMatch;
        request.caller = std::make_shared<Caller const>(caller);
        return processor.Process(request).answer;
    }

    static std::string HeaderOf(Answer const& answer, std::string const& name)
    {
        for (auto const& [header, value] : answer.headers)
        {
            if (header == name)
            {
                return value;
            }
        }
        return {};
    }

    static void ExpectProblem(Answer const& answer, uint32 status, std::string const& detail)
    {
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.contentType, "application/problem+json");
        EXPECT_EQ(Json::parse(answer.body).at("detail"), detail);
    }

    Answer PostSession(Json const& name, Json const& password)
    {
        return Send(Stranger(), "POST", "/session", {{"name", name}, {"password", password}});
    }

    Caller const administrator = Program(Role::ADMINISTRATOR);
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    AccountResources resources{router, accounts};
};

TEST_F(AccountResourcesTest, OpenASessionWithACookie)
{
    Add("anna", Role::ADMINISTRATOR);

    Answer const answer = PostSession("anna", PASSWORD);

    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(answer.contentType, "application/hal+json");
    EXPECT_EQ(HeaderOf(answer, "Cache-Control"), "no-store");
    Sessions::Session const session = sessions.List().at(0);
    std::string const cookie = HeaderOf(answer, "Set-Cookie");
    EXPECT_TRUE(cookie.starts_with("__Host-zucontrol="));
    EXPECT_EQ(cookie.substr(cookie.find(';')), "; Path=/; Secure; HttpOnly; SameSite=Strict");
    EXPECT_EQ(Json::parse(answer.body), (Json{{"_links", {{"self", {{"href", "/session"}}}}},
                                              {"caller", "user anna"},
                                              {"id", session.id},
                                              {"user", "anna"},
                                              {"role", "administrator"},
                                              {"source", "https 192.0.2.7"},
                                              {"isOwn", true},
                                              {"idleLeftSec", 1800},
                                              {"lifeLeftSec", 43200},
                                              {"crossSiteToken", session.crossSiteToken}}));
    Credentials credentials;
    std::string const pair = cookie.substr(0, cookie.find(';'));
    credentials.method = "GET";
    credentials.cookie = pair;
    EXPECT_TRUE(sessions.Find(credentials).caller.has_value());
}

TEST_F(AccountResourcesTest, RefuseAWrongLogin)
{
    Add("anna", Role::ADMINISTRATOR);
    for (Answer const& answer : {PostSession("anna", OTHER_PASSWORD), PostSession("carl", PASSWORD)})
    {
        ExpectProblem(answer, 401, "The name or the password is wrong.");
        EXPECT_EQ(HeaderOf(answer, "WWW-Authenticate"), "Bearer");
        EXPECT_EQ(HeaderOf(answer, "Set-Cookie"), "");
    }
    for (uint64 i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        PostSession("anna", OTHER_PASSWORD);
    }
    Answer const answer = PostSession("anna", PASSWORD);
    ExpectProblem(answer, 429, "Too many attempts have failed: the next one may be made in 1 seconds.");
    EXPECT_EQ(HeaderOf(answer, "Retry-After"), "1");
}

TEST_F(AccountResourcesTest, RefuseLoginsOfAnotherForm)
{
    ExpectProblem(PostSession(1, PASSWORD), 422, "The member 'name' of the body is no string.");
    ExpectProblem(Send(Stranger(), "POST", "/session"), 400, "The body is no JSON.");
    ExpectProblem(Send(Stranger(), "POST", "/session", {{"name", "anna"}}), 422,
                  "The body lacks the member 'password'.");
    ExpectProblem(Send(Stranger(), "POST", "/session", {{"name", "a"}, {"password", "b"}, {"role", "administrator"}}),
                  422, "The body has a member that is not known here.");
}

TEST_F(AccountResourcesTest, TellCallersWhoTheyAre)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");

    Json const own = Json::parse(Send(anna, "GET", "/session").body);
    EXPECT_EQ(own.at("caller"), "user anna");
    EXPECT_EQ(own.at("crossSiteToken"), sessions.List().at(0).crossSiteToken);
    Json const program = Json::parse(Send(Program(Role::VIEWER), "GET", "/session").body);
    EXPECT_EQ(program,
              (Json{{"_links", {{"self", {{"href", "/session"}}}}}, {"caller", "token line 4"}, {"role", "viewer"}}));
    EXPECT_EQ(Send(anna, "HEAD", "/session").status, 200U);
    EXPECT_EQ(HeaderOf(Send(anna, "OPTIONS", "/session"), "Allow"), "GET, HEAD, POST, DELETE, OPTIONS");
}

TEST_F(AccountResourcesTest, LogOutAndTakeTheCookieAway)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");

    Answer const answer = Send(anna, "DELETE", "/session");

    EXPECT_EQ(answer.status, 204U);
    EXPECT_EQ(HeaderOf(answer, "Set-Cookie"),
              "__Host-zucontrol=; Path=/; Secure; HttpOnly; SameSite=Strict; Max-Age=0");
    EXPECT_FALSE(sessions.IsCurrent(anna));
    ExpectProblem(Send(administrator, "DELETE", "/session"), 409, "This request belongs to no session.");
}

TEST_F(AccountResourcesTest, ListAndEndSessions)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    Caller const anna = LogIn("anna");
    Caller const bert = LogIn("bert");

    Json const list = Json::parse(Send(bert, "GET", "/sessions").body);
    ASSERT_EQ(list.at("sessions").size(), 1U);
    EXPECT_EQ(list.at("sessions").at(0).at("isOwn"), true);
    EXPECT_FALSE(list.at("sessions").at(0).contains("crossSiteToken"));
    EXPECT_EQ(list.at("_links").at("item").at(0).at("href"), "/sessions/" + bert.sessionId);
    EXPECT_EQ(Json::parse(Send(anna, "GET", "/sessions").body).at("sessions").size(), 2U);

    Json const one = Json::parse(Send(anna, "GET", "/sessions/" + bert.sessionId).body);
    EXPECT_TRUE(one.at("user") == "bert" && one.at("isOwn") == false && !one.contains("crossSiteToken"));
    ExpectProblem(Send(bert, "GET", "/sessions/" + anna.sessionId), 404, "There is no such session.");
    ExpectProblem(Send(bert, "DELETE", "/sessions/" + anna.sessionId), 404, "There is no such session.");
    EXPECT_EQ(Send(anna, "DELETE", "/sessions/" + bert.sessionId).status, 204U);
    EXPECT_FALSE(sessions.IsCurrent(bert));
}

TEST_F(AccountResourcesTest, AddUsersWithOddNames)
{
    Add("admin", Role::ADMINISTRATOR);
    for (std::string const& name : {std::string("a/b%2F?#&\"'<>\\"), std::string("..."), std::string("Zo\xC3\xAB"),
                                    std::string("\xF0\x9F\xA4\x96"), std::string(64, 'n')})
    {
        Answer const added =
            Send(administrator, "POST", "/users", {{"name", name}, {"role", "viewer"}, {"password", PASSWORD}});
        ASSERT_EQ(added.status, 201U) << name;
        std::string const path = HeaderOf(added, "Location");
        Json const shown = Json::parse(Send(administrator, "GET", path).body);
        EXPECT_EQ(shown.at("name"), name);
        EXPECT_EQ(shown.at("_links").at("self").at("href"), path);
        EXPECT_EQ(Send(administrator, "DELETE", path).status, 204U) << path;
    }
    ExpectProblem(Send(administrator, "POST", "/users", {{"name", "a\nb"}, {"role", "viewer"}, {"password", PASSWORD}}),
                  422,
                  "The name of a user has 1 to 64 bytes of UTF-8, single spaces only between other characters, no "
                  "control, format or invisible characters, and is not '.' or '..'.");
}

TEST_F(AccountResourcesTest, RefuseUsersOfAnotherForm)
{
    auto const post = [&](char const* role, char const* password) {
        return Send(administrator, "POST", "/users", {{"name", "anna"}, {"role", role}, {"password", password}});
    };
    constexpr char const* ROLES = "The member 'role' of the body is viewer, operator, engineer or administrator.";
    ExpectProblem(post("king", PASSWORD), 422, ROLES);
    ExpectProblem(post("none", PASSWORD), 422, ROLES);
    ExpectProblem(post("viewer", PASSWORD), 409, "The first user has the role administrator.");
    ExpectProblem(post("administrator", "short"), 422, "A password has at least 15 characters.");
    EXPECT_EQ(post("administrator", PASSWORD).status, 201U);
    ExpectProblem(post("viewer", PASSWORD), 409, "There is a user 'anna' already.");
}

TEST_F(AccountResourcesTest, ShowUsersWithoutTheirHashes)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    Caller const bert = LogIn("bert");

    Answer const answer = Send(administrator, "GET", "/users");
    EXPECT_EQ(answer.body.find("argon2"), std::string::npos);
    Json const list = Json::parse(answer.body);
    ASSERT_EQ(list.at("users").size(), 2U);
    EXPECT_EQ(list.at("users").at(0).at("name"), "anna");
    EXPECT_TRUE(list.at("users").at(0).at("lastLogin").is_null());
    EXPECT_EQ(list.at("_links").at("item").at(1), (Json{{"href", "/users/bert"}, {"title", "bert"}}));

    EXPECT_EQ(Json::parse(Send(bert, "GET", "/users/bert").body).at("role"), "viewer");
    ExpectProblem(Send(bert, "GET", "/users/anna"), 404, "There is no user 'anna'.");
    ExpectProblem(Send(bert, "PATCH", "/users/anna", {{"password", PASSWORD}}), 404, "There is no user 'anna'.");
}

TEST_F(AccountResourcesTest, ChangeAUser)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    EXPECT_EQ(Send(administrator, "PATCH", "/users/bert", {{"role", "engineer"}, {"enabled", false}}).status, 204U);
    User const bert = *users.Find(UserName("bert"));
    EXPECT_TRUE(bert.role == Role::ENGINEER && !bert.isEnabled);
    EXPECT_EQ(
        Send(administrator, "PATCH", "/users/bert", {{"enabled", true}, {"password", "another horse battery"}}).status,
        204U);

    Caller const own = LogIn("bert", "another horse battery");
    ExpectProblem(Send(own, "PATCH", "/users/bert", {{"password", PASSWORD}, {"oldPassword", PASSWORD}}), 403,
                  "The old password is wrong.");
    EXPECT_EQ(
        Send(own, "PATCH", "/users/bert", {{"password", PASSWORD}, {"oldPassword", "another horse battery"}}).status,
        204U);
    ExpectProblem(Send(administrator, "PATCH", "/users/bert", {{"roll", "viewer"}}), 422,
                  "The body has a member that is not known here.");
    EXPECT_EQ(Send(administrator, "PUT", "/users/bert", {{"role", "viewer"}}).status, 405U);
}

TEST_F(AccountResourcesTest, ChangeAUserOnlyInTheStateThatTheClientKnows)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    std::string const tag = HeaderOf(Send(administrator, "GET", "/users/bert"), "ETag");
    EXPECT_EQ(Send(administrator, "PATCH", "/users/bert", {{"role", "operator"}}, tag).status, 204U);
    ExpectProblem(Send(administrator, "PATCH", "/users/bert", {{"role", "engineer"}}, tag), 412,
                  "The user at /users/bert has changed.");
    ExpectProblem(Send(administrator, "DELETE", "/users/bert", nullptr, tag), 412,
                  "The user at /users/bert has changed.");
    EXPECT_EQ(users.Find(UserName("bert"))->role, Role::OPERATOR);
    EXPECT_EQ(Send(administrator, "DELETE", "/users/bert", nullptr, "*").status, 204U);
    ExpectProblem(Send(administrator, "DELETE", "/users/bert"), 404, "There is no user 'bert'.");
}

TEST_F(AccountResourcesTest, NoteChangesThatAreRefusedBeforeTheyAreTried)
{
    Add("anna", Role::ADMINISTRATOR);
    trail.Clear();
    Send(administrator, "POST", "/users", {{"name", "bert"}});
    Send(administrator, "POST", "/users", {{"name", " "}, {"role", "viewer"}, {"password", PASSWORD}});
    Send(administrator, "PATCH", "/users/anna", {{"role", "king"}, {"password", PASSWORD}});
    Send(administrator, "PATCH", "/users/anna", {{"enabled", false}}, "\"old\"");
    Send(administrator, "DELETE", "/users/anna", nullptr, "\"old\"");
    Send(administrator, "DELETE", "/users/carla");
    Send(administrator, "POST", "/setup", {{"code", "x"}, {"name", "anna"}, {"password", PASSWORD}});

    std::vector<std::string> changes;
    for (ZuHost::TrailEntry const& entry : trail.All())
    {
        EXPECT_TRUE(entry.result.starts_with("refused: ")) << entry.result;
        EXPECT_EQ(ZuTest::RecordingTrail::LineOf(entry).find(PASSWORD), std::string::npos);
        changes.push_back(entry.what + " " + entry.after);
    }
    EXPECT_EQ(changes, (std::vector<std::string>{"add user ", "add user ", R"(change user {"name":"anna"})",
                                                 R"(change user {"name":"anna"})", R"(remove user {"name":"anna"})",
                                                 R"(remove user {"name":"carla"})", "first administrator "}));
    EXPECT_EQ(trail.All()[3].result, "refused: The user at /users/anna has changed.");
}

TEST_F(AccountResourcesTest, AnswerThatADocumentHasNotChanged)
{
    Add("anna", Role::ADMINISTRATOR);
    ZuRest::Request request;
    request.path = "/users/anna";
    request.caller = std::make_shared<Caller const>(administrator);
    request.ifNoneMatch = HeaderOf(Send(administrator, "GET", "/users/anna"), "ETag");
    EXPECT_EQ(processor.Process(request).answer.status, 304U);
}

TEST_F(AccountResourcesTest, LetOneOfTwoAdministratorsDemoteTheOther)
{
    Add("carl", Role::ADMINISTRATOR);
    for (unsigned round = 0; round < 10; ++round)
    {
        Add("anna", Role::ADMINISTRATOR);
        Add("bert", Role::ADMINISTRATOR);
        Caller const anna = LogIn("anna");
        Caller const bert = LogIn("bert");
        uint32 annas = 0;
        uint32 berts = 0;
        std::thread first([&] { annas = Send(anna, "PATCH", "/users/bert", {{"role", "viewer"}}).status; });
        std::thread second([&] { berts = Send(bert, "PATCH", "/users/anna", {{"role", "viewer"}}).status; });
        first.join();
        second.join();

        // The second one sees no other users any more, or has no session.
        EXPECT_NE(annas == 204U, berts == 204U) << annas << ' ' << berts;
        EXPECT_NE(users.Find(UserName("anna"))->role, users.Find(UserName("bert"))->role);
        Send(administrator, "DELETE", "/users/anna");
        Send(administrator, "DELETE", "/users/bert");
    }
}

TEST_F(AccountResourcesTest, KeepTheLastAdministrator)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    constexpr char const* DETAIL = "No administrator would be left who can log in: give another user this role first.";
    ExpectProblem(Send(anna, "DELETE", "/users/anna"), 409, DETAIL);
    ExpectProblem(Send(anna, "PATCH", "/users/anna", {{"role", "engineer"}}), 409, DETAIL);
    ExpectProblem(Send(anna, "PATCH", "/users/anna", {{"enabled", false}}), 409, DETAIL);
}

TEST_F(AccountResourcesTest, MakeTheFirstAdministrator)
{
    auto const post = [&](std::string const& code) {
        return Send(Stranger(), "POST", "/setup", {{"code", code}, {"name", "Anna B"}, {"password", PASSWORD}});
    };
    ExpectProblem(post("AAAA-AAAA-AAAA-AAAA"), 409,
                  "There is no code, or it has ended: start the host with --reset-administrator for a new one.");
    std::string const code = OfferedCode();
    ExpectProblem(post("AAAA-AAAA-AAAA-AAAA"), 403, "The code is wrong.");
    Answer const answer = post(code);
    EXPECT_EQ(answer.status, 201U);
    EXPECT_EQ(HeaderOf(answer, "Location"), "/users/Anna%20B");
    EXPECT_EQ(Send(Stranger(), "GET", "/setup").status, 405U);
}

TEST_F(AccountResourcesTest, KnowNothingOfRequestsWithoutASender)
{
    ZuRest::Request request;
    request.path = "/users";
    EXPECT_EQ(Json::parse(processor.Process(request).answer.body).at("users"), Json::array());
}

} // namespace ZuHost
