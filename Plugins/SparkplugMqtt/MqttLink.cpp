#include "Plugins/SparkplugMqtt/MqttLink.h"

#include "wApi/wTime.h"

#include <mosquitto.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <mutex>
#include <utility>

namespace SparkplugMqtt
{

namespace
{

constexpr int WILL_QOS = 1;
constexpr int SUBSCRIPTION_QOS = 1;
constexpr uint8 REFUSED = 0x80;           // in the answer to a subscription
constexpr std::size_t MOST_EVENTS = 1024; // further messages are dropped until the caller has taken these

/// The reasons of a server that does not accept a connection.
char const* ReasonOf(int code)
{
    switch (code)
    {
    case 1:
        return "the server does not speak MQTT 3.1.1";
    case 2:
        return "the server refuses the client's name";
    case 3:
        return "the server is not available";
    case 4:
        return "the server refuses user and password";
    case 5:
        return "the server does not authorise this client";
    default:
        return "the server refuses the connection";
    }
}

std::string TextOf(int status)
{
    if (status == MOSQ_ERR_KEEPALIVE) // for which the library has no text
    {
        return "the server does not answer";
    }
    return status == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(status);
}

/// The library's tables live to the end of the process, as the plug-in itself does.
void PrepareLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { mosquitto_lib_init(); });
}

} // namespace

bool ServerAddress::Read(std::string const& text, ServerAddress& address)
{
    std::string host = text;
    std::string port;
    std::size_t const bracket = text.starts_with('[') ? text.find(']') : std::string::npos;
    std::size_t const colon = text.find(':', bracket == std::string::npos ? 0 : bracket);
    if (colon != std::string::npos)
    {
        host = text.substr(0, colon);
        port = text.substr(colon + 1);
    }
    if (bracket != std::string::npos)
    {
        bool const isWhole = host.size() == bracket + 1;
        host = isWhole ? text.substr(1, bracket - 1) : "";
    }
    uint16 number = 1883;
    auto const [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
    bool const isPort = colon == std::string::npos || (error == std::errc{} && end == port.data() + port.size());
    bool const isHost = !host.empty() && host.size() <= 253 &&
                        std::ranges::all_of(host, [](char character) { return character > 32 && character < 127; });
    if (!isPort || !isHost || number == 0)
    {
        return false;
    }
    address = {host, number};
    return true;
}

MqttLink::MqttLink(Settings newSettings, Waker& usedWaker) : settings(std::move(newSettings)), waker(usedWaker)
{
    PrepareLibrary();
}

MqttLink::~MqttLink() = default;

void MqttLink::Connect(std::size_t server, Will const& will)
{
    ServerAddress const& address = settings.servers.at(server);
    place = address.host + ":" + std::to_string(address.port);
    refusal.clear();
    untakenBytes = 0;
    client.reset(mosquitto_new(settings.clientId.c_str(), true, this));
    int status = client == nullptr ? MOSQ_ERR_NOMEM : Prepare(will);
    if (status == MOSQ_ERR_SUCCESS)
    {
        status = mosquitto_connect_async(client.get(), address.host.c_str(), address.port,
                                         static_cast<int>(settings.keepAliveSeconds));
    }
    if (status != MOSQ_ERR_SUCCESS)
    {
        Fail(TextOf(status));
    }
}

void MqttLink::Subscribe(std::vector<std::string> const& topics)
{
    std::vector<char*> names;
    for (std::string const& topic : topics)
    {
        names.push_back(const_cast<char*>(topic.c_str())); // the library only reads them
    }
    mosquitto_subscribe_multiple(client.get(), nullptr, static_cast<int>(names.size()), names.data(), SUBSCRIPTION_QOS,
                                 0, nullptr);
}

void MqttLink::Publish(std::string const& topic, std::span<uint8 const> payload)
{
    if (client == nullptr)
    {
        return; // the loss is among the events of the next `Poll`
    }
    mosquitto_publish(client.get(), nullptr, topic.c_str(), static_cast<int>(payload.size()), payload.data(), 0, false);
    uint64 const bytes = topic.size() + payload.size();
    bytesOut += bytes;
    untakenBytes = mosquitto_want_write(client.get()) ? untakenBytes + bytes : 0;
    if (untakenBytes > MOST_UNTAKEN_BYTES)
    {
        Fail("the server takes no data");
    }
}

void MqttLink::Disconnect(bool isOrderly)
{
    if (isOrderly && client != nullptr)
    {
        mosquitto_disconnect(client.get());
        uint64 const latest = wTime_AfterUsec(FLUSH_USEC);
        while (client != nullptr && wTime_NowUsec() < latest)
        {
            Poll(20); // until the server closes the connection; events of the old session have no meaning any more
        }
    }
    client.reset();
    events.clear();
}

std::vector<MqttLink::Event> MqttLink::Poll(uint32 timeoutMsec)
{
    std::array<pollfd, 2> watched = {{{waker.Descriptor(), POLLIN, 0}, {-1, 0, 0}}};
    if (client != nullptr)
    {
        short const wanted = mosquitto_want_write(client.get()) ? POLLIN | POLLOUT : POLLIN;
        watched[1] = {mosquitto_socket(client.get()), wanted, 0};
    }
    poll(watched.data(), watched.size(), events.empty() ? static_cast<int>(timeoutMsec) : 0);
    waker.Clear();
    if (client != nullptr)
    {
        Loop();
    }
    return std::exchange(events, {});
}

void MqttLink::Closer::operator()(mosquitto* closed) const
{
    mosquitto_destroy(closed);
}

int MqttLink::Prepare(Will const& will)
{
    mosquitto* const made = client.get();
    mosquitto_connect_callback_set(made, OnConnect);
    mosquitto_subscribe_callback_set(made, OnSubscribe);
    mosquitto_message_callback_set(made, OnMessage);
    mosquitto_int_option(made, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V311);
    mosquitto_int_option(made, MOSQ_OPT_TCP_NODELAY, 1);
    int status = mosquitto_will_set(made, will.topic.c_str(), static_cast<int>(will.payload.size()),
                                    will.payload.data(), WILL_QOS, false);
    if (status == MOSQ_ERR_SUCCESS && !settings.user.empty())
    {
        status = mosquitto_username_pw_set(made, settings.user.c_str(), settings.password.c_str());
    }
    return status == MOSQ_ERR_SUCCESS && settings.useTls ? PrepareTls() : status;
}

int MqttLink::PrepareTls()
{
    constexpr char const* SYSTEM_AUTHORITIES = "/etc/ssl/certs";
    constexpr int VERIFY_PEER = 1;
    auto const orNull = [](std::string const& text) { return text.empty() ? nullptr : text.c_str(); };
    bool const isOwn = !settings.authorityFile.empty();
    int const status =
        mosquitto_tls_set(client.get(), orNull(settings.authorityFile), isOwn ? nullptr : SYSTEM_AUTHORITIES,
                          orNull(settings.certificateFile), orNull(settings.keyFile), nullptr);
    return status == MOSQ_ERR_SUCCESS ? mosquitto_tls_opts_set(client.get(), VERIFY_PEER, nullptr, nullptr) : status;
}

void MqttLink::Fail(std::string const& reason)
{
    lastFailure = place + ": " + (refusal.empty() ? reason : refusal);
    client.reset();
    events.push_back({Event::Kind::LOST});
}

void MqttLink::Loop()
{
    constexpr int MOST_PACKETS = 1; // the value that the library asks for
    int const status = mosquitto_loop(client.get(), 0, MOST_PACKETS);
    if (status != MOSQ_ERR_SUCCESS)
    {
        Fail(TextOf(status));
    }
}

void MqttLink::OnConnect(mosquitto* /*client*/, void* self, int code)
{
    auto& link = *static_cast<MqttLink*>(self);
    if (code != 0)
    {
        link.refusal = ReasonOf(code);
        return; // the connection ends by itself
    }
    link.lastFailure.clear();
    link.events.push_back({Event::Kind::CONNECTED});
}

void MqttLink::OnSubscribe(mosquitto* /*client*/, void* self, int /*id*/, int count, int const* granted)
{
    auto& link = *static_cast<MqttLink*>(self);
    if (std::any_of(granted, granted + count, [](int qos) { return qos >= REFUSED; }))
    {
        link.refusal = "the server refuses the subscriptions";
        mosquitto_disconnect(link.client.get());
        return;
    }
    link.events.push_back({Event::Kind::SUBSCRIBED});
}

void MqttLink::OnMessage(mosquitto* /*client*/, void* self, mosquitto_message const* message)
{
    auto& link = *static_cast<MqttLink*>(self);
    if (link.events.size() >= MOST_EVENTS)
    {
        return;
    }
    auto const size = std::min(static_cast<std::size_t>(message->payloadlen), CommandLimits::MOST_BYTES + 1);
    auto const* const bytes = static_cast<uint8 const*>(message->payload);
    link.events.push_back({Event::Kind::RECEIVED, message->topic, std::vector<uint8>(bytes, bytes + size)});
}

} // namespace SparkplugMqtt
