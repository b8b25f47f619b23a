#include "Host/Security/Gatekeeper.h"

#include "Host/Http/HttpServer.h"
#include "Host/Security/TokenFile.h"
#include "Support/RecordingTrail.h"
#include "ZuRest/Caller.h"

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using ZuCommon::Role;

/// Knows callers by the whole of the header Authorization: "viewer" has the role of this name.
class FakeSource final : public ICallerSource
{
public:
    bool HasCallers() const noexcept override
    {
        return hasCallers;
    }

    Proof Find(Credentials const& credentials) override
    {
        if (credentials.authorization.empty())
        {
            return {};
        }
        auto const found = callers.find(credentials.authorization);
        return found != callers.end() ? Proof{found->second, refusal, false} : Proof{{}, "", true};
    }

    bool IsCurrent(ZuRest::Caller const& caller) const noexcept override
    {
        return caller.name == current;
    }

    bool hasCallers = true;
    std::string refusal;
    std::string current;
    std::map<std::string, KnownCaller, std::less<>> callers;
};

class GatekeeperTest : public testing::Test
{
protected:
    GatekeeperTest()
    {
        for (auto const role : {Role::VIEWER, Role::OPERATOR, Role::ENGINEER, Role::ADMINISTRATOR})
        {
            std::string const name = ZuCommon::RoleName(role);
            source.callers[name] = {role, "token " + name, ""};
        }
        gatekeeper.SetBeyondLoopback(false);
    }

    Admission Admit(char const* method, std::string_view path, char const* who = "", char const* query = "")
    {
        return gatekeeper.Admit({method, path, query, who, "", "", boost::asio::ip::make_address("192.0.2.7"), false});
    }

    uint32 StatusOf(char const* method, std::string_view path, char const* who = "", char const* query = "")
    {
        Admission const admission = Admit(method, path, who, query);
        return admission.caller != nullptr ? 200 : admission.refusal.status;
    }

    static std::string DetailOf(Admission const& admission)
    {
        return nlohmann::json::parse(admission.refusal.body).at("detail");
    }

    ZuTest::RecordingTrail trail;
    FakeSource source;
    TokenFile file{""};
    std::map<std::string, std::string> methods{{"/health", "GET, HEAD, OPTIONS"},
                                               {"/jobs/a", "GET, HEAD, PUT, DELETE, OPTIONS"}};
    Gatekeeper gatekeeper{{&file, &source}, trail, [this](auto const& path) { return methods[path]; }};
};

} // namespace

TEST_F(GatekeeperTest, IsOpenOnLoopbackWithoutCallers)
{
    source.hasCallers = false;

    Admission const admission = Admit("DELETE", "/jobs/a");

    ASSERT_NE(admission.caller, nullptr);
    EXPECT_EQ(admission.caller->name, "local");
    EXPECT_EQ(admission.caller->role, Role::ADMINISTRATOR);
    EXPECT_EQ(admission.caller->source, "http 192.0.2.7");
    EXPECT_EQ(admission.maxBodyBytes, HttpServer::MAX_BODY_BYTES);
    EXPECT_TRUE(gatekeeper.IsCurrent(*admission.caller));
    EXPECT_TRUE(trail.All().empty());
}

TEST_F(GatekeeperTest, ShowsTheLoginNoticeToCallersThatAreNotLoggedIn)
{
    auto const noticeOf = [](Admission const& admission) {
        return nlohmann::json::parse(admission.refusal.body).value("notice", "none");
    };
    EXPECT_EQ(noticeOf(Admit("GET", "/session")), "none");

    gatekeeper.SetLoginNotice("Only for the staff of hall 3.\nEverything is noted.");

    Admission const refused = Admit("GET", "/session");
    EXPECT_EQ(refused.refusal.status, 401U);
    EXPECT_EQ(refused.refusal.contentType, "application/problem+json");
    EXPECT_EQ(noticeOf(refused), "Only for the staff of hall 3.\nEverything is noted.");
    EXPECT_EQ(refused.refusal.headers, Admit("GET", "/").refusal.headers);
    EXPECT_EQ(noticeOf(Admit("DELETE", "/jobs/a", "viewer")), "none") << "this caller is known";
}

TEST_F(GatekeeperTest, ClosesWithTheFirstCallerAndBeyondLoopback)
{
    ZuRest::Caller const local{Role::ADMINISTRATOR, "local", "", "", false};
    EXPECT_EQ(StatusOf("GET", "/jobs"), 401U) << "the source has callers";
    EXPECT_FALSE(gatekeeper.IsCurrent(local));

    source.hasCallers = false;
    EXPECT_EQ(StatusOf("GET", "/jobs"), 200U);
    file.Set("0123456789abcdef");
    EXPECT_EQ(StatusOf("GET", "/jobs"), 401U) << "there is a token file";
    file.Set("");
    EXPECT_EQ(StatusOf("GET", "/jobs"), 200U);
    gatekeeper.SetBeyondLoopback(true);
    EXPECT_EQ(StatusOf("GET", "/jobs"), 401U) << "other machines reach it";
}

TEST_F(GatekeeperTest, IsClosedUntilItKnowsItsReach)
{
    source.hasCallers = false;
    Gatekeeper fresh({&source}, trail, [](auto const&) { return "GET, HEAD, OPTIONS"; });

    EXPECT_EQ(fresh.Admit({"GET", "/jobs", "", "", "", "", {}, false}).caller, nullptr);
}

TEST_F(GatekeeperTest, AsksForACallerByABearerToken)
{
    Admission const admission = Admit("GET", "/jobs");

    EXPECT_EQ(admission.caller, nullptr);
    EXPECT_FALSE(admission.isWrongSecret);
    EXPECT_EQ(admission.refusal.headers,
              (std::vector<std::pair<std::string, std::string>>{{"WWW-Authenticate", "Bearer"}}));
    EXPECT_EQ(DetailOf(admission), "This service asks for a token: send the header Authorization: Bearer TOKEN.");
    EXPECT_TRUE(Admit("GET", "/jobs", "wrong").isWrongSecret);
}

TEST_F(GatekeeperTest, TellsWhichRoleIsNeeded)
{
    struct Row
    {
        char const* name;
        char const* shown;
    };
    constexpr Row ROWS[] = {
        {"token line 4", "token 'line 4'"}, {"user anna", "user 'anna'"}, {"token file", "token file"}};
    for (Row const& row : ROWS)
    {
        source.callers["viewer"].name = row.name;

        Admission const admission = Admit("PUT", "/jobs/a", "viewer");

        EXPECT_EQ(admission.refusal.status, 403U);
        EXPECT_EQ(DetailOf(admission),
                  std::string("This needs the role engineer; ") + row.shown + " has the role viewer.");
    }
}

TEST_F(GatekeeperTest, AdmitsEachRoleToItsRoutesAndThoseOfLowerRoles)
{
    for (RouteTable::Route const& route : RouteTable::All())
    {
        EXPECT_EQ(StatusOf(route.method, route.path), route.role == Role::NONE ? 200U : 401U) << route.path;
        for (auto const& [who, caller] : source.callers)
        {
            EXPECT_EQ(StatusOf(route.method, route.path, who.c_str()), caller.role >= route.role ? 200U : 403U)
                << who << ' ' << route.method << ' ' << route.path;
        }
    }
}

TEST_F(GatekeeperTest, KnowsTheCallerOfARouteThatIsOpenToEverybody)
{
    EXPECT_EQ(Admit("GET", "/health", "viewer").caller->name, "token viewer");
    EXPECT_EQ(Admit("HEAD", "/health").caller->role, Role::NONE);
    EXPECT_EQ(Admit("GET", "/health", "wrong").caller->name, "");
    EXPECT_EQ(Admit("GET", "/health").maxBodyBytes, 0U);
}

TEST_F(GatekeeperTest, LetsEachCallerAskForTheMethods)
{
    EXPECT_EQ(StatusOf("OPTIONS", "/jobs/a"), 401U);
    EXPECT_EQ(StatusOf("OPTIONS", "/jobs/a", "viewer"), 200U);
    EXPECT_EQ(StatusOf("OPTIONS", "*", "viewer"), 200U);
}

TEST_F(GatekeeperTest, RefusesMethodsThatTheTableDoesNotName)
{
    Admission const admission = Admit("DELETE", "/health", "administrator");

    EXPECT_EQ(admission.refusal.status, 405U);
    EXPECT_EQ(DetailOf(admission), "The resource at /health does not know the method DELETE.");
    EXPECT_EQ(admission.refusal.headers,
              (std::vector<std::pair<std::string, std::string>>{{"Allow", "GET, HEAD, OPTIONS"}}));
    EXPECT_EQ(StatusOf("DELETE", "/health"), 401U) << "without a caller";
}

TEST_F(GatekeeperTest, DeniesWhatTheTableDoesNotName)
{
    methods["/forgotten"] = "GET, HEAD, OPTIONS";
    methods["/jobs"] = "GET, HEAD, POST, OPTIONS";

    Admission const admission = Admit("GET", "/forgotten", "administrator");

    EXPECT_EQ(admission.refusal.status, 403U);
    EXPECT_EQ(DetailOf(admission), "The table of routes does not name GET /forgotten, so nobody has access.");
    EXPECT_EQ(StatusOf("OPTIONS", "/forgotten", "administrator"), 403U);
    EXPECT_EQ(StatusOf("POST", "/jobs", "administrator"), 403U) << "a method that the resource knows";
    EXPECT_EQ(StatusOf("PUT", "/jobs", "administrator"), 405U);
    EXPECT_EQ(StatusOf("GET", "/nowhere", "viewer"), 200U) << "the resources answer: there is nothing";
}

TEST_F(GatekeeperTest, RefusesTokensInAddresses)
{
    for (char const* query : {"token=a", "access_token=a", "a=b&token", "%74oken=a", "a&access%5Ftoken=b&c"})
    {
        EXPECT_EQ(StatusOf("GET", "/jobs", "viewer", query), 400U) << query;
        EXPECT_EQ(StatusOf("GET", "/health", "", query), 400U) << query;
    }
    for (char const* query : {"", "schema=true", "a=token=b", "tokens=1", "&&", "mytoken=a"})
    {
        EXPECT_EQ(StatusOf("GET", "/jobs", "viewer", query), 200U) << query;
    }
    EXPECT_TRUE(trail.All().empty());
}

TEST_F(GatekeeperTest, AsksAllSources)
{
    file.Set("0123456789abcdef");

    Admission const byFile = Admit("GET", "/jobs", "Bearer 0123456789abcdef");
    EXPECT_EQ(byFile.caller->name, "token file");
    EXPECT_EQ(byFile.caller->role, Role::ADMINISTRATOR);
    EXPECT_TRUE(gatekeeper.IsCurrent(*byFile.caller));
    EXPECT_EQ(Admit("GET", "/jobs", "viewer").caller->name, "token viewer")
        << "wrong for the file, right for the other";
    EXPECT_FALSE(gatekeeper.IsCurrent({Role::VIEWER, "token viewer", "", "", false}));
    source.current = "token viewer";
    EXPECT_TRUE(gatekeeper.IsCurrent({Role::VIEWER, "token viewer", "", "", false}));
}

TEST_F(GatekeeperTest, PassesTheRefusalOfASource)
{
    source.refusal = "The cross-site token is missing.";

    Admission const admission = Admit("GET", "/jobs", "viewer");

    EXPECT_EQ(admission.refusal.status, 403U);
    EXPECT_EQ(DetailOf(admission), source.refusal);
    EXPECT_EQ(Admit("GET", "/health", "viewer").caller->name, "") << "open to everybody";
}

TEST_F(GatekeeperTest, NotesRefusalsInTheTrail)
{
    Admit("GET", "/jobs");
    Admit("PUT", "/jobs/a", "viewer");
    Admit("DELETE", "/health", "viewer"); // 405: no attempt to get in

    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{" | http 192.0.2.7 | GET /jobs |  |  | 401",
                                                       "token viewer | http 192.0.2.7 | PUT /jobs/a |  |  | 403"}));
}

} // namespace ZuHost
