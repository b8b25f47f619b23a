#include "Plugins/Common/TcpServer.h"
#include "Plugins/Common/TcpMetrics.h"
#include "Support/CallLog.h"
#include "Support/DescriptorLimit.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/Common/EchoConversation.h"
#include "Tests/Plugins/Common/TcpClient.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace PluginCommon
{

class TcpServerTest : public testing::Test
{
protected:
    static TcpSettings At(uint16 port, uint64 idleSeconds = 60)
    {
        return {"127.0.0.1", port, 16, idleSeconds * 1'000'000};
    }

    static void ExpectEcho(TcpClient& client)
    {
        client.SendText("?");
        EXPECT_EQ(client.Receive(1), TcpClient::Bytes{'?'});
    }

    static TcpSettings For(uint64 maxClients, uint64 makeRoomAfterUsec)
    {
        return {"127.0.0.1", 0, maxClients, 60'000'000, makeRoomAfterUsec};
    }

    /// Connects until a client is idle for long enough to make room.
    TcpClient ConnectUntilServed()
    {
        for (uint64 rejected = counters.rejectedClients;; rejected = counters.rejectedClients)
        {
            TcpClient client(server.Port());
            client.SendText("?");
            try
            {
                client.Receive(1);
                return client;
            }
            catch (std::runtime_error const&)
            {
                EXPECT_GT(counters.rejectedClients, rejected);
            }
        }
    }

    ZuTest::CallLog calls;
    TcpCounters counters;
    TcpServer server{{.displayName = "The test",
                      .threadName = "Test.Io",
                      .makeConversation =
                          [this] {
                              calls.Add("made");
                              return std::make_unique<EchoConversation>();
                          },
                      .clientsChanged = [this](uint64 count) { calls.Add(std::to_string(count)); }},
                     counters};
};

TEST_F(TcpServerTest, TellsOfAClientBeforeItServesIt)
{
    server.Start(At(0));
    TcpClient client(server.Port());
    ExpectEcho(client);
    EXPECT_EQ(calls.All(), (std::vector<std::string>{"made", "1"}));

    server.Stop();

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(calls.All().back(), "0");
    EXPECT_EQ(counters.clients, 0u);
    EXPECT_EQ(counters.droppedClients, 0u);
}

TEST_F(TcpServerTest, ClosesTheConnectionOfAClientThatHasEnded)
{
    server.Start(At(0));
    TcpClient client(server.Port());
    ExpectEcho(client);

    client.EndSending();

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_TRUE(calls.WaitFor("0"));
    EXPECT_EQ(counters.droppedClients, 0u);
}

TEST_F(TcpServerTest, VisitsEachClientThatIsThere)
{
    std::atomic<int> visits{0};
    auto const visit = [&](ITcpConversation&) {
        ++visits;
        return true;
    };
    EXPECT_FALSE(server.PostToEach(visit)); // the server does not run
    server.Start(At(0));
    TcpClient first(server.Port());
    TcpClient second(server.Port());
    ExpectEcho(first);
    ExpectEcho(second);

    EXPECT_TRUE(server.PostToEach([&](ITcpConversation&) -> bool {
        ++visits;
        calls.Add("visit");
        throw std::runtime_error("keeps nothing from the others");
    }));

    EXPECT_TRUE(calls.WaitFor("visit", 2));
    server.Stop();
    EXPECT_FALSE(server.PostToEach(visit));
    EXPECT_EQ(visits, 2);
}

TEST_F(TcpServerTest, SendsWhatAVisitHasAdded)
{
    server.Start(At(0));
    TcpClient client(server.Port());
    ExpectEcho(client);

    server.PostToEach([](ITcpConversation& conversation) {
        conversation.Room()[0] = '!';
        conversation.Received(1);
        return true;
    });

    EXPECT_EQ(client.Receive(1), TcpClient::Bytes{'!'});
}

TEST_F(TcpServerTest, DropsAllClientsOnDemand)
{
    server.DisconnectAll(); // does nothing: the server does not run
    server.Start(At(0));
    TcpClient first(server.Port());
    TcpClient second(server.Port());
    ExpectEcho(first);
    ExpectEcho(second);

    server.DisconnectAll();

    EXPECT_TRUE(first.IsClosedByServer());
    EXPECT_TRUE(second.IsClosedByServer());
    EXPECT_EQ(counters.droppedClients, 2u);
    TcpClient third(server.Port());
    ExpectEcho(third);
}

TEST_F(TcpServerTest, AppliesLimitsInPlace)
{
    server.Start(At(0, 60));
    uint16 const port = server.Port();
    TcpClient client(port);
    ExpectEcho(client);
    TcpSettings settings = At(0);
    settings.idleTimeoutUsec = 1000;

    server.Apply(settings);

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(counters.droppedClients, 1u);
    EXPECT_EQ(server.Port(), port);
}

TEST_F(TcpServerTest, KeepsItsClientsWhenItMoves)
{
    server.Start(At(0));
    uint16 const before = server.Port();
    TcpClient client(before);
    ExpectEcho(client);
    TcpSettings settings = At(0);
    settings.address = "127.0.0.2";

    server.Apply(settings);

    EXPECT_EQ(server.Endpoint(), "127.0.0.2:" + std::to_string(server.Port()));
    ExpectEcho(client);
    EXPECT_THROW(TcpClient{before}, std::runtime_error); // nothing listens there any more
    server.Apply(At(0));
    TcpClient newcomer(server.Port());
    ExpectEcho(newcomer);
    ExpectEcho(client);
    EXPECT_EQ(counters.acceptedClients, 2u);
}

TEST_F(TcpServerTest, KeepsItsClientsWhenItMovesToAnAddressThatOverlapsItsOwn)
{
    server.Start(At(0));
    uint16 const port = server.Port();
    TcpClient client(port);
    ExpectEcho(client);
    TcpSettings settings = At(port);
    settings.address = "0.0.0.0";

    server.Apply(settings);

    EXPECT_EQ(server.Endpoint(), "0.0.0.0:" + std::to_string(port));
    ExpectEcho(client);
    TcpClient newcomer(port);
    ExpectEcho(newcomer);
}

TEST_F(TcpServerTest, KeepsItsClientsWhenTheNewAddressIsInvalid)
{
    server.Start(At(0));
    std::string const before = server.Endpoint();
    TcpClient client(server.Port());
    ExpectEcho(client);
    TcpSettings settings = At(0);
    settings.address = "nonsense";

    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(settings); }),
              (ZuTest::Refusal{-997, "The test cannot listen on nonsense:0: the address is not an IP address"}));

    EXPECT_EQ(server.Endpoint(), before);
    ExpectEcho(client);
    TcpClient newcomer(server.Port());
    ExpectEcho(newcomer);
}

TEST_F(TcpServerTest, OpensItsListenerAgainWhenAnOverlappingAddressIsTaken)
{
    server.Start(At(0));
    uint16 const port = server.Port();
    OccupiedPort const taken("127.0.0.2", port);
    TcpClient client(port);
    ExpectEcho(client);
    TcpSettings settings = At(port);
    settings.address = "0.0.0.0";

    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(settings); }),
              (ZuTest::Refusal{-976, "The test cannot listen on 0.0.0.0:" + std::to_string(port) +
                                         ": Address already in use"}));

    EXPECT_EQ(server.Endpoint(), "127.0.0.1:" + std::to_string(port));
    ExpectEcho(client);
    TcpClient newcomer(port);
    ExpectEcho(newcomer);
}

TEST_F(TcpServerTest, GoesBackToThePortThatItHadWhenTheNewOneIsTaken)
{
    OccupiedPort const taken;
    server.Start(At(0));
    uint16 const port = server.Port();

    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(At(taken.Number())); }),
              (ZuTest::Refusal{-976, "The test cannot listen on 127.0.0.1:" + std::to_string(taken.Number()) +
                                         ": Address already in use"}));

    EXPECT_TRUE(server.IsRunning());
    EXPECT_EQ(server.Endpoint(), "127.0.0.1:" + std::to_string(port));
    TcpClient client(port);
    ExpectEcho(client);
    server.Apply(At(0)); // the address of its present settings: the server keeps its socket
    EXPECT_EQ(server.Port(), port);
}

TEST_F(TcpServerTest, LetsTheClientThatIsIdleForLongestMakeRoom)
{
    server.Start(For(2, 1000));
    TcpClient first(server.Port());
    ExpectEcho(first);
    TcpClient second(server.Port());
    ExpectEcho(second);

    TcpClient third = ConnectUntilServed();

    EXPECT_TRUE(first.IsClosedByServer());
    ExpectEcho(second);
    ExpectEcho(third);
    EXPECT_EQ(counters.droppedClients, 1u);
    EXPECT_EQ(counters.clients, 2u);
}

TEST_F(TcpServerTest, TurnsANewClientAwayWhileAllOthersAreInUse)
{
    server.Start(For(2, 60'000'000));
    TcpClient first(server.Port());
    ExpectEcho(first);
    TcpClient second(server.Port());
    ExpectEcho(second);

    TcpClient third(server.Port());

    EXPECT_TRUE(third.IsClosedByServer());
    ExpectEcho(first);
    ExpectEcho(second);
    EXPECT_EQ(counters.rejectedClients, 1u);
    EXPECT_EQ(counters.droppedClients, 0u);
}

TEST_F(TcpServerTest, GivesEachAddressItsShareOfThePlaces)
{
    server.Start(For(4, 60'000'000));
    std::vector<TcpClient> greedy;
    for (int i = 0; i < 4; ++i)
    {
        greedy.emplace_back(server.Port());
        ExpectEcho(greedy.back());
    }
    TcpClient fifth(server.Port());
    EXPECT_TRUE(fifth.IsClosedByServer()); // the address has its share

    TcpClient first(server.Port(), 0, "127.0.0.2");
    ExpectEcho(first);
    TcpClient second(server.Port(), 0, "127.0.0.2");
    ExpectEcho(second);
    TcpClient third(server.Port(), 0, "127.0.0.2");

    EXPECT_TRUE(third.IsClosedByServer()); // two of four
    EXPECT_TRUE(greedy[0].IsClosedByServer());
    EXPECT_TRUE(greedy[1].IsClosedByServer());
    ExpectEcho(greedy[2]);
    ExpectEcho(greedy[3]);
    ExpectEcho(first);
    EXPECT_EQ(counters.rejectedClients, 2u);
    EXPECT_EQ(counters.droppedClients, 2u);
}

TEST_F(TcpServerTest, ServesAClientThatConnectedWhileNoDescriptorWasFree)
{
    server.Start(At(0));
    TcpClient present(server.Port());
    ExpectEcho(present);
    std::optional<TcpClient> waiting;
    {
        ZuTest::DescriptorLimit const one(1); // for the client, and none for the server
        waiting.emplace(server.Port());
        waiting->SendText("!");
        ExpectEcho(present); // behind the attempt to accept the other client
        EXPECT_EQ(counters.clients, 1u);
    }
    EXPECT_EQ(waiting->Receive(1), TcpClient::Bytes{'!'});
    EXPECT_EQ(counters.clients, 2u);
    ExpectEcho(present);
}

TEST_F(TcpServerTest, ListensOnVersion6)
{
    TcpSettings settings = At(0);
    settings.address = "::1";
    try
    {
        server.Start(settings);
    }
    catch (Zu::Exception const& exception)
    {
        GTEST_SKIP() << "this machine has no IPv6: " << exception.what();
    }

    EXPECT_EQ(server.Endpoint(), "[::1]:" + std::to_string(server.Port()));
}

TEST_F(TcpServerTest, ClosesClientsOutsideTheAllowedNetworks)
{
    TcpSettings settings = At(0);
    settings.address = "0.0.0.0";
    settings.allowedClients = "127.0.0.2, 127.1.0.0/16";
    server.Start(settings);

    TcpClient denied(server.Port());
    TcpClient allowed(server.Port(), 0, "127.0.0.2");
    TcpClient alsoAllowed(server.Port(), 0, "127.1.2.3");

    EXPECT_TRUE(denied.IsClosedByServer());
    ExpectEcho(allowed);
    ExpectEcho(alsoAllowed);
    EXPECT_EQ(counters.deniedClients, 1u);
    EXPECT_EQ(counters.acceptedClients, 2u);
    EXPECT_EQ(counters.rejectedClients, 0u);
}

TEST_F(TcpServerTest, TellsOneOfManyDeniedClients)
{
    ZuTest::LogRecorder const log;
    TcpSettings settings = At(0);
    settings.allowedClients = "10.0.0.7";
    server.Start(settings);

    for (int i = 0; i < 5; ++i)
    {
        TcpClient denied(server.Port());
        EXPECT_TRUE(denied.IsClosedByServer());
    }

    EXPECT_EQ(counters.deniedClients, 5u);
    EXPECT_EQ(log.Lines(), std::vector{ZuTest::UserWarning(
                               "The test closes a connection of 127.0.0.1: it may not connect (1 since the "
                               "last such line)")});
}

TEST_F(TcpServerTest, JudgesConnectedClientsByNewLists)
{
    TcpSettings settings = At(0);
    server.Start(settings);
    TcpClient leaves(server.Port());
    TcpClient stays(server.Port(), 0, "127.0.0.2");
    ExpectEcho(leaves);
    ExpectEcho(stays);
    settings.allowedClients = "127.0.0.2";

    server.Apply(settings);

    EXPECT_TRUE(leaves.IsClosedByServer());
    ExpectEcho(stays);
    EXPECT_EQ(counters.deniedClients, 1u);
    EXPECT_EQ(counters.droppedClients, 1u);
}

TEST_F(TcpServerTest, TellsEachConversationTheRoleOfItsClient)
{
    TcpSettings settings = At(0);
    settings.writers = "127.0.0.2";
    server.Start(settings);
    TcpClient reader(server.Port());
    TcpClient writer(server.Port(), 0, "127.0.0.2");
    ExpectEcho(reader);
    ExpectEcho(writer);
    auto const roles = [&] {
        std::map<std::string, std::string> found;
        server.PostToEach([&found](ITcpConversation& conversation) {
            found[conversation.Client().address] = ZuCommon::RoleName(conversation.Client().role);
            return false;
        });
        server.Apply(settings); // returns after the visits
        return found;
    };

    EXPECT_EQ(roles(), (std::map<std::string, std::string>{{"127.0.0.1", "viewer"}, {"127.0.0.2", "operator"}}));
    settings.writers = "127.0.0.0/31"; // 127.0.0.0 and 127.0.0.1
    server.Apply(settings);
    EXPECT_EQ(roles(), (std::map<std::string, std::string>{{"127.0.0.1", "operator"}, {"127.0.0.2", "viewer"}}));
    settings.isReadOnly = true;
    server.Apply(settings);
    EXPECT_EQ(roles(), (std::map<std::string, std::string>{{"127.0.0.1", "viewer"}, {"127.0.0.2", "viewer"}}));
}

TEST_F(TcpServerTest, KeepsItsListsWhenNewOnesAreRefused)
{
    TcpSettings settings = At(0);
    settings.allowedClients = "127.0.0.1";
    server.Start(settings);
    TcpClient client(server.Port());
    settings.address = "127.0.0.3";
    settings.allowedClients = "127.0.0.2, 127";

    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(settings); }).status, -997);

    ExpectEcho(client);
    EXPECT_TRUE(server.Endpoint().starts_with("127.0.0.1:")) << server.Endpoint();
}

TEST_F(TcpServerTest, ChecksListsAlsoWhileItDoesNotRun)
{
    TcpSettings settings = At(0);
    settings.writers = "nonsense";

    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(settings); }).status, -997);
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(settings); }).status, -997);
    EXPECT_FALSE(server.IsRunning());
}

TEST_F(TcpServerTest, IsOpenToANetworkBeyondLoopbackWithoutAList)
{
    EXPECT_FALSE(server.IsOpenToNetwork());
    TcpSettings settings = At(0);
    server.Start(settings);
    EXPECT_FALSE(server.IsOpenToNetwork());
    settings.address = "0.0.0.0";
    server.Apply(settings);
    EXPECT_TRUE(server.IsOpenToNetwork());
    settings.allowedClients = "10.0.0.0/8";
    server.Apply(settings);
    EXPECT_FALSE(server.IsOpenToNetwork());
    settings.allowedClients = "";
    server.Apply(settings);
    EXPECT_TRUE(server.IsOpenToNetwork());
    server.Stop();
    EXPECT_FALSE(server.IsOpenToNetwork());
}

TEST_F(TcpServerTest, DoesNothingWhileItDoesNotRun)
{
    server.Apply(At(0));
    server.Stop();

    EXPECT_FALSE(server.IsRunning());
    EXPECT_EQ(server.Endpoint(), "");
    EXPECT_EQ(server.Port(), 0);
    EXPECT_TRUE(calls.All().empty());
}

} // namespace PluginCommon
