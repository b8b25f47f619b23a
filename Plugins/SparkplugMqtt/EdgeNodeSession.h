#pragma once

#include "Plugins/SparkplugMqtt/CommandPayload.h"
#include "Plugins/SparkplugMqtt/MetricWriter.h"
#include "Plugins/SparkplugMqtt/ServerWalk.h"
#include "Plugins/SparkplugMqtt/Topics.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace SparkplugMqtt
{

/// The connection to one server at a time, as the session uses it. The link reports what happens to the session after
/// the call has returned, never during it.
class IServerLink
{
public:
    /// The message that the server publishes when the connection is lost, with QoS 1, not retained.
    struct Will
    {
        std::string const& topic;
        std::span<uint8 const> payload;
    };

    virtual ~IServerLink();

    /// Begins to connect, with a clean session.
    virtual void Connect(std::size_t server, Will const& will) = 0;

    /// Asks for all `topics` with QoS 1.
    virtual void Subscribe(std::vector<std::string> const& topics) = 0;

    /// Sends with QoS 0, not retained.
    virtual void Publish(std::string const& topic, std::span<uint8 const> payload) = 0;

    /// Ends the connection after the messages published so far. `isOrderly`: with a DISCONNECT packet, so that the
    /// server drops the will.
    virtual void Disconnect(bool isOrderly) = 0;
};

/// The content of the births, and the receiver of commands. The owner of the session implements it.
class INodeContent
{
public:
    virtual ~INodeContent();

    /// Writes the metrics of the node itself, apart from "bdSeq" and "Node Control/Rebirth".
    virtual void WriteNodeBirth(MetricWriter& writer, uint64 utcMsec) = 0;

    /// Writes all metrics of the device with their present values.
    virtual void WriteDeviceBirth(MetricWriter& writer, uint64 utcMsec) = 0;

    /// A host has sent these values to the device.
    virtual void DeviceCommand(std::vector<CommandMetric> const& metrics) = 0;

    /// The number of the connection that begins next: keep it, so that the next program start continues behind it.
    virtual void BirthSequenceChanged(uint8 bdSeq) = 0;

    /// Whether that number survives a kill of the program.
    virtual bool IsBirthSequenceKept() = 0;
};

/// A point in time by both clocks.
struct Moment
{
    uint64 steadyUsec = 0; ///< monotonic, for intervals
    uint64 utcMsec = 0;    ///< for timestamps
};

/// The rules of an edge node with one device: which message follows which, with which numbers. It has no socket, no
/// thread and no clock.
///
/// A session has its number kept, connects, subscribes, waits for the primary host if it has one, and publishes its
/// births; then it is born and takes data. It walks on to the next server when the connection fails or ends, when the
/// server does not answer within ANSWER_USEC, and when the primary host is offline there.
///
/// Threads: one thread calls all operations.
class EdgeNodeSession final
{
public:
    static constexpr uint64 ANSWER_USEC = 10'000'000;        ///< longest wait for a server's or primary host's answer
    static constexpr uint64 BIRTH_INTERVAL_USEC = 1'000'000; ///< between two births
    static constexpr uint64 KEEPING_USEC = 3'000'000;        ///< longest wait until the number of a connection is kept
    static constexpr uint64 LASTING_USEC = 30'000'000;       ///< a born session of this age is a success
    static constexpr std::size_t MOST_BIRTH_BYTES = 512 * 1024;
    static constexpr char const* REBIRTH = "Node Control/Rebirth";
    static constexpr char const* BD_SEQ = "bdSeq";

    struct Settings
    {
        NodeIds ids;
        std::string primaryHostId; ///< empty: waits for no host
        std::size_t serverCount = 1;
    };

    enum class Phase : uint8
    {
        PAUSING, ///< between two connections
        CONNECTING,
        SUBSCRIBING,
        WAITING, ///< for the primary host
        BORN,
        ENDED
    };

    struct Counters
    {
        uint64 births = 0;
        uint64 dataMessages = 0;
        uint64 commands = 0;    ///< well-formed commands
        uint64 badMessages = 0; ///< received messages that are no valid Sparkplug message
        uint64 rebirthRequests = 0;
        uint64 lostSessions = 0; ///< sessions that ended after their birth
    };

    /// Link and content outlive the session. `lastBdSeq` is the number of the last connection, absent if there was none.
    EdgeNodeSession(Settings newSettings, IServerLink& usedLink, INodeContent& usedContent,
                    std::optional<uint8> lastBdSeq, ServerWalk::Draw draw);
    EdgeNodeSession(EdgeNodeSession const&) = delete;
    EdgeNodeSession& operator=(EdgeNodeSession const&) = delete;

    /// Does what is due. Call it several times a second.
    void Tick(Moment now);

    // Reports of the link.
    void Connected(Moment now);
    void Subscribed(Moment now);
    void Received(std::string_view topic, std::span<uint8 const> payload, Moment now);
    void Lost(Moment now); ///< refused or ended; does nothing while the link is closed

    /// Publishes data of the device, the bytes of a MetricWriter. Returns false, and publishes nothing, if `CanPublish`
    /// is false.
    bool PublishDeviceData(std::span<uint8 const> metrics, Moment now);

    /// Whether the births are published and no new birth is due.
    bool CanPublish() const
    {
        return phase == Phase::BORN && !isBirthDue;
    }

    /// The metrics have changed: publishes the births again, at most once in BIRTH_INTERVAL_USEC. Until then there are
    /// no data.
    void RequestBirth(Moment now);

    /// Publishes the death of the node, and of the device if it is born, and disconnects. The session does nothing more.
    void End(Moment now);

    Phase PresentPhase() const
    {
        return phase;
    }

    std::size_t Server() const
    {
        return walk.Server();
    }

    /// How many sessions in a row have ended after their birth and before LASTING_USEC. Several mean that another
    /// client has the same name: a server then ends the older connection.
    uint64 EarlyLosses() const
    {
        return earlyLosses;
    }

    Counters const& Counts() const
    {
        return counters;
    }

private:
    void TakeNumber(Moment now);
    bool MayBegin(Moment now);
    void Begin(Moment now);
    void Pause(Moment now);
    void Leave(Moment now, bool isWalkingOn);
    void TakeState(std::span<uint8 const> payload, Moment now);
    void TakeNodeCommand(std::vector<CommandMetric> const& metrics, Moment now);
    void BirthIfDue(Moment now);
    void Birth(Moment now);
    void AddBdSeq(uint64 utcMsec);
    void PublishWriter(std::string const& topic, Moment now);
    void PublishDeaths(Moment now);

    Settings const settings;
    Topics const topics;
    IServerLink& link;
    INodeContent& content;
    ServerWalk walk;
    Counters counters;
    Phase phase = Phase::PAUSING;
    uint64 phaseUntilUsec = 0; // end of a pause, or of the wait for an answer
    uint8 bdSeq;               // of the present connection, or of the next one
    bool isNumbered = false;   // during a pause: `bdSeq` is the number of the next connection
    uint64 numberedAtUsec = 0;
    uint8 seq = 0; // of the next message
    bool isBirthDue = false;
    bool isHostOnline = false;
    uint64 hostStampMsec = 0;                // of the last STATE message in this connection
    uint64 bornAtUsec = 0;                   // of the last birth
    std::optional<uint64> sessionBornAtUsec; // of the first birth in this connection
    uint64 earlyLosses = 0;
    MetricWriter writer{MOST_BIRTH_BYTES};
    std::vector<uint8> payload;
    std::vector<CommandMetric> received;
};

} // namespace SparkplugMqtt
