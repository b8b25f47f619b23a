#include "Plugins/SparkplugMqtt/MqttLink.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace SparkplugMqtt
{

TEST(ServerAddress, IsReadFromHostAndPort)
{
    struct Case
    {
        std::string text;
        std::string host;
        uint16 port;
    };
    Case const cases[] = {
        {"10.0.0.5", "10.0.0.5", 1883},
        {"10.0.0.5:8883", "10.0.0.5", 8883},
        {"mqtt.plant:1", "mqtt.plant", 1},
        {"[fe80::1]:65535", "fe80::1", 65535},
        {"[::1]", "::1", 1883},
    };
    for (Case const& one : cases)
    {
        ServerAddress address;
        EXPECT_TRUE(ServerAddress::Read(one.text, address)) << one.text;
        EXPECT_EQ(address.host, one.host);
        EXPECT_EQ(address.port, one.port);
    }
}

TEST(ServerAddress, IsRefusedInOtherTexts)
{
    for (std::string const text : {"", ":1883", "host:", "host:0", "host:65536", "host:-1", "host:1883x", "host:x",
                                   "a b", "::1", "[::1", "[::1]x", "[::1]x:5", "[]:5", "h\nost"})
    {
        ServerAddress address{"kept", 5};
        EXPECT_FALSE(ServerAddress::Read(text, address)) << text;
        EXPECT_EQ(address.host, "kept");
    }
    ServerAddress address;
    EXPECT_FALSE(ServerAddress::Read(std::string(254, 'h'), address));
}

namespace
{

/// The settings of a server that is not there.
MqttLink::Settings Nowhere()
{
    MqttLink::Settings settings;
    settings.servers = {{"127.0.0.1", 1}};
    settings.clientId = "x";
    return settings;
}

} // namespace

TEST(MqttLink, TellsWhyItCannotConnect)
{
    Waker waker;
    MqttLink link(Nowhere(), waker);
    std::string const topic = "t";
    link.Connect(0, {topic, {}});
    auto const events = link.Poll(0);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].kind, MqttLink::Event::Kind::LOST);
    EXPECT_EQ(link.LastFailure(), "127.0.0.1:1: Connection refused");
}

TEST(MqttLink, RefusesACertificateThatIsNotThere)
{
    Waker waker;
    MqttLink::Settings settings = Nowhere();
    settings.useTls = true;
    settings.authorityFile = "/nowhere/ca.pem";
    MqttLink link(settings, waker);
    std::string const topic = "t";
    link.Connect(0, {topic, {}});
    EXPECT_EQ(link.Poll(0).size(), 1U);
    EXPECT_NE(link.LastFailure(), "");
}

TEST(MqttLink, LeavesAServerThatTakesNoData)
{
    int const server = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(server, reinterpret_cast<sockaddr const*>(&address), size), 0);
    ASSERT_EQ(listen(server, 5), 0);
    ASSERT_EQ(getsockname(server, reinterpret_cast<sockaddr*>(&address), &size), 0);
    MqttLink::Settings settings = Nowhere();
    settings.servers[0].port = ntohs(address.sin_port);
    Waker waker;
    MqttLink link(settings, waker);
    std::string const topic = "t";
    std::vector<uint8> const payload(100'000, 7);
    link.Connect(0, {topic, {}});
    std::vector<MqttLink::Event> events;
    for (int i = 0; i < 1000 && events.empty(); ++i)
    {
        link.Publish(topic, payload);
        events = link.Poll(0);
    }
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].kind, MqttLink::Event::Kind::LOST);
    EXPECT_EQ(link.LastFailure(),
              "127.0.0.1:" + std::to_string(settings.servers[0].port) + ": the server takes no data");
    link.Publish(topic, payload); // has no effect any more
    close(server);
}

TEST(MqttLink, AWakeEndsTheWait)
{
    Waker waker;
    MqttLink link(Nowhere(), waker);
    waker.Wake();
    waker.Wake();
    EXPECT_TRUE(link.Poll(600'000).empty());
    EXPECT_TRUE(link.Poll(0).empty());
}

} // namespace SparkplugMqtt
