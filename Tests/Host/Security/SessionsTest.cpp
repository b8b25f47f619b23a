#include "Host/Security/Sessions.h"

#include "Host/Http/IGatekeeper.h"
#include "Host/Security/SecurityStore.h"
#include "Host/Security/UserStore.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/Caller.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using ZuCommon::Role;

constexpr uint64 MINUTE = 60'000'000;

} // namespace

class SessionsTest : public testing::Test
{
protected:
    Sessions::Opened Open(char const* user, Role role = Role::VIEWER)
    {
        return sessions.Open(UserName(user), role, "https 192.0.2.7");
    }

    Proof Ask(std::string const& cookie, std::string_view method = "GET", std::string const& token = {})
    {
        Credentials credentials;
        credentials.method = method;
        credentials.path = "/jobs";
        credentials.cookie = cookie;
        credentials.crossSiteToken = token;
        return sessions.Find(credentials);
    }

    static std::string CookieOf(Sessions::Opened const& opened)
    {
        return "__Host-zucontrol=" + opened.secret;
    }

    bool IsLet(Sessions::Opened const& opened)
    {
        return Ask(CookieOf(opened)).caller.has_value();
    }

    ZuTest::ScratchFolder scratch;
    SecurityStore archive{scratch / "security"};
    UserStore users{archive};
    uint64 nowUsec = 1'000 * MINUTE;
    Sessions sessions{users, [this] { return nowUsec; }};
};

TEST_F(SessionsTest, KnowACallerByTheCookie)
{
    Sessions::Opened const anna = Open("Anna", Role::ENGINEER);

    Proof const proof = Ask(CookieOf(anna));

    ASSERT_TRUE(proof.caller.has_value());
    EXPECT_EQ(proof.caller->name, "user Anna");
    EXPECT_EQ(proof.caller->role, Role::ENGINEER);
    EXPECT_EQ(proof.caller->sessionId, anna.session.id);
    EXPECT_EQ(proof.refusal, "");
    EXPECT_FALSE(proof.isWrongSecret);
    EXPECT_EQ(anna.secret.size(), 43U) << "256 bits";
}

TEST_F(SessionsTest, FindTheCookieAmongOthers)
{
    Sessions::Opened const anna = Open("anna");
    EXPECT_TRUE(Ask("theme=dark; " + CookieOf(anna) + ";x=y").caller.has_value());
    EXPECT_TRUE(Ask(" \t" + CookieOf(anna) + " ").caller.has_value());
}

TEST_F(SessionsTest, SayNothingOnRequestsWithoutTheCookie)
{
    Sessions::Opened const anna = Open("anna");
    for (std::string const& header :
         {std::string(), std::string(";"), std::string(" "), std::string(";;=; ;"), "zucontrol=" + anna.secret,
          "__host-zucontrol=" + anna.secret, "__Host-zucontrol2=" + anna.secret, "x__Host-zucontrol=" + anna.secret})
    {
        Proof const proof = Ask(header);
        EXPECT_FALSE(proof.caller.has_value()) << header;
        EXPECT_FALSE(proof.isWrongSecret) << header;
    }
}

TEST_F(SessionsTest, RefuseForgedCookiesAndCookiesOfAnotherHost)
{
    Sessions::Opened const anna = Open("anna");
    Sessions otherHost(users, [this] { return nowUsec; });
    for (std::string const& header :
         {std::string("__Host-zucontrol"), std::string("__Host-zucontrol="), std::string("__Host-zucontrol=guess"),
          CookieOf(anna) + "x", CookieOf(anna).substr(0, CookieOf(anna).size() - 1),
          "__Host-zucontrol=" + anna.session.id, "__Host-zucontrol=" + anna.session.crossSiteToken,
          CookieOf(anna) + "; " + CookieOf(anna), "__Host-zucontrol=guess; " + CookieOf(anna),
          CookieOf(otherHost.Open(UserName("anna"), Role::ADMINISTRATOR, "https 192.0.2.7")),
          "__Host-zucontrol=" + std::string(16'000, 'a')})
    {
        Proof const proof = Ask(header);
        EXPECT_FALSE(proof.caller.has_value()) << header.substr(0, 100);
        EXPECT_TRUE(proof.isWrongSecret) << header.substr(0, 100);
    }
}

TEST_F(SessionsTest, AskForTheCrossSiteTokenOfChanges)
{
    Sessions::Opened const anna = Open("anna");
    Sessions::Opened const bert = Open("bert");
    for (char const* const method : {"POST", "PUT", "PATCH", "DELETE", "ODD"})
    {
        for (std::string const& token : {std::string(), std::string("guess"), bert.session.crossSiteToken, anna.secret})
        {
            Proof const proof = Ask(CookieOf(anna), method, token);
            EXPECT_TRUE(proof.caller.has_value()) << method;
            EXPECT_EQ(proof.refusal,
                      "The request lacks the token of the session: send the header X-CSRF-Token with the "
                      "member crossSiteToken of /session.")
                << method;
        }
        EXPECT_EQ(Ask(CookieOf(anna), method, anna.session.crossSiteToken).refusal, "") << method;
    }
    for (char const* const method : {"GET", "HEAD", "OPTIONS"})
    {
        EXPECT_EQ(Ask(CookieOf(anna), method).refusal, "") << method;
    }
}

TEST_F(SessionsTest, EndWithoutRequests)
{
    Sessions::Opened const anna = Open("anna");
    nowUsec += Sessions::IDLE_USEC - 1;
    EXPECT_TRUE(IsLet(anna)) << "and this is a request";
    nowUsec += Sessions::IDLE_USEC - 1;
    EXPECT_EQ(sessions.List().at(0).IdleLeftUsec(nowUsec), 1U);
    EXPECT_TRUE(sessions.Get(anna.session.id).has_value());
    nowUsec += 1;

    EXPECT_FALSE(sessions.Get(anna.session.id).has_value());
    EXPECT_TRUE(sessions.List().empty());
    EXPECT_TRUE(Ask(CookieOf(anna)).isWrongSecret);
    EXPECT_FALSE(sessions.End(anna.session.id));
}

TEST_F(SessionsTest, EndAfterSomeTimeInAnyCase)
{
    Sessions::Opened const anna = Open("anna");
    for (unsigned i = 0; i < 12 * 60 - 1; ++i)
    {
        nowUsec += MINUTE;
        ASSERT_TRUE(IsLet(anna)) << i;
    }
    EXPECT_EQ(sessions.List().at(0).IdleLeftUsec(nowUsec), MINUTE);
    nowUsec += MINUTE;
    EXPECT_FALSE(IsLet(anna));
}

TEST_F(SessionsTest, EndOneOrAllOfAUser)
{
    Sessions::Opened const one = Open("anna");
    Sessions::Opened const two = Open("anna");
    Sessions::Opened const three = Open("Anna");
    Sessions::Opened const bert = Open("bert");

    EXPECT_TRUE(sessions.End(one.session.id));
    EXPECT_FALSE(sessions.End(one.session.id));
    EXPECT_FALSE(sessions.End("nothing"));
    EXPECT_FALSE(IsLet(one));
    EXPECT_TRUE(IsLet(two));

    sessions.EndOf(UserName("ANNA"));
    EXPECT_FALSE(IsLet(two));
    EXPECT_FALSE(IsLet(three));
    EXPECT_TRUE(IsLet(bert));
}

TEST_F(SessionsTest, TellOfSessionsThatAreEnded)
{
    unsigned told = 0;
    Zu::Subscription const subscription = sessions.EndedSignal().Subscribe([&] { ++told; });
    Sessions::Opened const anna = Open("anna");
    sessions.End("nothing");
    EXPECT_EQ(told, 0U);
    sessions.End(anna.session.id);
    EXPECT_EQ(told, 1U);
    sessions.EndOf(UserName("anna"));
    EXPECT_EQ(told, 2U);
}

TEST_F(SessionsTest, AreListedInTheOrderOfTheirLogins)
{
    std::vector<std::string> ids;
    for (char const* const user : {"carl", "anna", "bert"})
    {
        nowUsec += MINUTE;
        ids.push_back(Open(user).session.id);
    }
    std::vector<std::string> found;
    for (Sessions::Session const& session : sessions.List())
    {
        found.push_back(session.id);
        EXPECT_EQ(session.source, "https 192.0.2.7");
    }
    EXPECT_EQ(found, ids);
}

TEST_F(SessionsTest, MakeRoomByEndingTheLongestIdleSessionOfTheUser)
{
    std::vector<Sessions::Opened> annas;
    Sessions::Opened const bert = Open("bert");
    for (std::size_t i = 1; i < Sessions::MAX_SESSIONS; ++i)
    {
        ++nowUsec;
        annas.push_back(Open("anna"));
    }
    ++nowUsec;
    EXPECT_TRUE(IsLet(annas.at(0))) << "no longer the longest idle one";

    Open("anna");
    EXPECT_FALSE(IsLet(annas.at(1)));

    Open("bert");
    EXPECT_FALSE(IsLet(bert));
    EXPECT_EQ(sessions.List().size(), Sessions::MAX_SESSIONS);
}

TEST_F(SessionsTest, MakeRoomForAnotherUserAtTheCostOfTheOneWithTheMost)
{
    Sessions::Opened const bert = Open("bert");
    std::vector<Sessions::Opened> annas;
    for (std::size_t i = 1; i < Sessions::MAX_SESSIONS; ++i)
    {
        ++nowUsec;
        annas.push_back(Open("anna"));
    }

    Sessions::Opened const carl = Open("carl");

    EXPECT_TRUE(IsLet(carl));
    EXPECT_TRUE(IsLet(bert)) << "although it is idle for the longest time";
    EXPECT_FALSE(IsLet(annas.at(0)));
    EXPECT_EQ(sessions.List().size(), Sessions::MAX_SESSIONS);
}

TEST_F(SessionsTest, MakeRoomByDroppingSessionsThatHaveEnded)
{
    for (std::size_t i = 0; i < Sessions::MAX_SESSIONS; ++i)
    {
        Open("anna");
    }
    nowUsec += Sessions::IDLE_USEC - MINUTE;
    sessions.End(sessions.List().at(0).id);
    Sessions::Opened const bert = Open("bert");
    nowUsec += MINUTE;
    Open("carl");
    EXPECT_TRUE(IsLet(bert));
    EXPECT_EQ(sessions.List().size(), 2U);
}

TEST_F(SessionsTest, TellWhetherACallerStillHasASession)
{
    Sessions::Opened const anna = Open("anna");
    ZuRest::Caller caller;
    EXPECT_FALSE(sessions.IsCurrent(caller)) << "a caller of another kind";
    caller.sessionId = anna.session.id;
    EXPECT_TRUE(sessions.IsCurrent(caller));
    sessions.End(anna.session.id);
    EXPECT_FALSE(sessions.IsCurrent(caller));
}

TEST_F(SessionsTest, CloseTheServiceAsSoonAsThereAreUsers)
{
    EXPECT_FALSE(sessions.HasCallers());
    users.Add({UserName("anna"), Role::ADMINISTRATOR, true, "", "", ""});
    EXPECT_TRUE(sessions.HasCallers());
}

} // namespace ZuHost
