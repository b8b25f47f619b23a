#include "Plugins/Common/TcpServer.h"
#include "Plugins/Common/ClientCounters.h"
#include "Support/CallLog.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/Common/TcpClient.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

namespace PluginCommon
{

/// Keeps its socket open and sends nothing.
class SilentConnection final : public ITcpConnection
{
public:
    SilentConnection(boost::asio::ip::tcp::socket acceptedSocket, ZuTest::CallLog& usedCalls)
        : socket(std::move(acceptedSocket)), calls(usedCalls)
    {
    }

    void Begin() override
    {
        calls.Add("Begin");
    }

    void CheckDeadlines(Clock::time_point, Clock::duration idleTimeout) override
    {
        calls.Add("CheckDeadlines " + std::to_string(idleTimeout / std::chrono::seconds(1)));
    }

    void Close() override
    {
        calls.Add("Close");
        boost::system::error_code ignored;
        socket.close(ignored);
    }

private:
    boost::asio::ip::tcp::socket socket;
    ZuTest::CallLog& calls;
};

class TcpServerTest : public testing::Test
{
protected:
    static TcpSettings At(uint16 port, uint64 idleSeconds = 60)
    {
        return {"127.0.0.1", port, 16, idleSeconds * 1'000'000};
    }

    ZuTest::CallLog calls;
    ClientCounters counters;
    TcpServer server{
        {.displayName = "The test",
         .threadName = "Test.Io",
         .makeConnection = [this](auto socket,
                                  auto) { return std::make_shared<SilentConnection>(std::move(socket), calls); },
         .clientsChanged = [this](uint64 count) { calls.Add(std::to_string(count)); }},
        counters};
};

TEST_F(TcpServerTest, TellsOfAClientBeforeItServesIt)
{
    server.Start(At(0));
    TcpClient const client(server.Port());
    ASSERT_TRUE(calls.WaitFor("Begin"));
    EXPECT_EQ(calls.All()[0], "1");

    server.Stop();

    EXPECT_EQ(calls.Count("Close"), 1u);
    EXPECT_EQ(calls.All().back(), "0");
    EXPECT_EQ(counters.clients, 0u);
}

TEST_F(TcpServerTest, VisitsEachClientThatIsThere)
{
    std::atomic<int> visits{0};
    EXPECT_FALSE(server.PostToEach([&](ITcpConnection&) { ++visits; })); // the server does not run
    server.Start(At(0));
    TcpClient const first(server.Port());
    TcpClient const second(server.Port());
    ASSERT_TRUE(calls.WaitFor("Begin", 2));

    EXPECT_TRUE(server.PostToEach([&](ITcpConnection&) {
        ++visits;
        calls.Add("visit");
        throw std::runtime_error("keeps nothing from the others");
    }));

    EXPECT_TRUE(calls.WaitFor("visit", 2));
    server.Stop();
    EXPECT_FALSE(server.PostToEach([&](ITcpConnection&) { ++visits; }));
    EXPECT_EQ(visits, 2);
}

TEST_F(TcpServerTest, AppliesLimitsInPlace)
{
    server.Start(At(0, 60));
    uint16 const port = server.Port();
    TcpClient const client(port);
    ASSERT_TRUE(calls.WaitFor("Begin"));

    server.Apply(At(0, 7));

    EXPECT_TRUE(calls.WaitFor("CheckDeadlines 7"));
    EXPECT_EQ(server.Port(), port);
    EXPECT_EQ(calls.Count("Close"), 0u);
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
    TcpClient const client(port);
    EXPECT_TRUE(calls.WaitFor("Begin"));
    server.Apply(At(0)); // the address of its present settings: the server keeps its socket
    EXPECT_EQ(server.Port(), port);
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
