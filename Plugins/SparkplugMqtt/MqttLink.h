#pragma once

#include "Plugins/SparkplugMqtt/EdgeNodeSession.h"
#include "Plugins/SparkplugMqtt/Waker.h"
#include "wApi/wTypes.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

struct mosquitto;
struct mosquitto_message;

namespace SparkplugMqtt
{

/// The address of an MQTT server.
struct ServerAddress
{
    std::string host; ///< a name or a numeric address
    uint16 port = 1883;

    /// Reads "host", "host:port" or "[IPv6 address]:port". Returns false if `text` is none of these.
    static bool Read(std::string const& text, ServerAddress& address);
};

/// The connection to one of several MQTT servers, by libmosquitto, without a thread of its own. MQTT 3.1.1, a clean
/// session; with TLS version 1.2 or newer, and the server's certificate must have its name and a known authority.
///
/// Threads: one thread calls all operations.
class MqttLink final : public IServerLink
{
public:
    static constexpr uint64 FLUSH_USEC = 500'000; ///< longest wait for the last messages of a connection

    /// A server that leaves more bytes than these untaken is left. It bounds the memory of messages that wait.
    static constexpr uint64 MOST_UNTAKEN_BYTES = 4 * 1024 * 1024;

    struct Settings
    {
        std::vector<ServerAddress> servers;
        std::string clientId;
        uint32 keepAliveSeconds = 30;
        std::string user; ///< empty: no name and password are sent
        std::string password;
        bool useTls = false;
        std::string authorityFile; ///< empty: the authorities of the system
        std::string certificateFile;
        std::string keyFile;
    };

    /// A report of the connection for the session.
    struct Event
    {
        enum class Kind : uint8
        {
            CONNECTED,
            SUBSCRIBED,
            RECEIVED,
            LOST
        };

        Kind kind = Kind::LOST;
        std::string topic = {};
        std::vector<uint8> payload = {};
    };

    /// The waker outlives the link.
    MqttLink(Settings newSettings, Waker& usedWaker);
    ~MqttLink() override; ///< drops the connection
    MqttLink(MqttLink const&) = delete;
    MqttLink& operator=(MqttLink const&) = delete;

    void Connect(std::size_t server, Will const& will) override;
    void Subscribe(std::vector<std::string> const& topics) override;
    void Publish(std::string const& topic, std::span<uint8 const> payload) override;
    void Disconnect(bool isOrderly) override;

    /// Reads and writes the socket. Waits for it, for the waker or for the time-out. Returns the events in their order.
    std::vector<Event> Poll(uint32 timeoutMsec);

    /// Why the last connection failed or ended; empty while one is open.
    std::string const& LastFailure() const
    {
        return lastFailure;
    }

    uint64 BytesOut() const
    {
        return bytesOut;
    }

private:
    struct Closer
    {
        void operator()(mosquitto* client) const;
    };

    int Prepare(Will const& will);
    int PrepareTls();
    void Fail(std::string const& reason);
    void Loop();
    static void OnConnect(mosquitto* client, void* self, int code);
    static void OnSubscribe(mosquitto* client, void* self, int id, int count, int const* granted);
    static void OnMessage(mosquitto* client, void* self, mosquitto_message const* message);

    Settings const settings;
    Waker& waker;
    std::unique_ptr<mosquitto, Closer> client; // null while no connection is open
    std::vector<Event> events;
    std::string place; // host and port of the present connection
    std::string lastFailure;
    std::string refusal; // of the server, until the connection ends
    uint64 bytesOut = 0;
    uint64 untakenBytes = 0; // published since the socket last took everything
};

} // namespace SparkplugMqtt
