#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/SharedText.h"
#include "ZuApi/Structure.h"

namespace AsciiTcp
{

/// The metrics of the service. Numbers count from the last reset, unless their title says "now". Any thread may read
/// them during an update.
struct AsciiMetrics final : public Zu::Properties::Structure
{
public:
    AsciiMetrics();
    ~AsciiMetrics() override;
    AsciiMetrics(AsciiMetrics const&) = delete;
    AsciiMetrics& operator=(AsciiMetrics const&) = delete;

    using Metric = Zu::Properties::Metric;

    Metric controlDrops{Metric::Kind::COUNTER, "Results lost on the way to clients"};
    Zu::Properties::SharedText listening; ///< current address, such as "127.0.0.1:5025"; empty while stopped
    Metric clients{Metric::Kind::GAUGE, "Clients connected now"};
    Metric acceptedClients{Metric::Kind::COUNTER, "Clients accepted"};
    Metric rejectedClients{Metric::Kind::COUNTER, "Clients closed at once, beyond the largest number of clients"};
    Metric droppedClients{Metric::Kind::COUNTER, "Clients closed by the service"};
    Metric requests{Metric::Kind::COUNTER, "Requests answered"};
    Metric errors{Metric::Kind::COUNTER, "Requests refused"};
    Metric bytesIn{Metric::Kind::COUNTER, "Bytes received"};
    Metric bytesOut{Metric::Kind::COUNTER, "Bytes sent"};
    Metric resultSets{Metric::Kind::COUNTER, "Result sets taken"};
    Metric lastHandlingUsec{Metric::Kind::GAUGE, "Time from the last request to its answer"};
    Metric largestHandlingUsec{Metric::Kind::GAUGE, "Longest time from a request to its answer"};
    Zu::Properties::SharedText lastText; ///< the last text that the command sendText has sent
};

} // namespace AsciiTcp
