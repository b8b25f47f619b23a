#pragma once

#include "Plugins/Common/TcpMetrics.h"
#include "ZuApi/Properties/SharedText.h"

namespace SparkplugMqtt
{

/// The counters of the service since its construction. The control drops are samples that were never sent.
struct SparkplugCounters final
{
    using Counter = PluginCommon::TcpCounters::Counter;

    Counter controlDrops{0};
    Counter births{0};
    Counter dataMessages{0};
    Counter historicalMessages{0};
    Counter commands{0};
    Counter badMessages{0};
    Counter rebirthRequests{0};
    Counter lostSessions{0};
    Counter clockJumps{0};
    Counter bytesOut{0};
    Counter storedSamples{0}; ///< now
    Counter storedBytes{0};   ///< now
    Counter unsentSamples{0}; ///< now
};

/// The metrics of the service. Numbers count from the last reset, unless their title says "now". Any thread may read
/// them during an update.
class SparkplugMetrics final : public PluginCommon::CounterMetrics
{
public:
    explicit SparkplugMetrics(SparkplugCounters const& counters);
    ~SparkplugMetrics() override;

    Zu::Properties::SharedText session;   ///< the phase of the session, such as "born"; empty while stopped
    Zu::Properties::SharedText server;    ///< the server of the session
    Zu::Properties::SharedText dataTopic; ///< the topic of the outputs; empty while stopped
    Zu::Properties::SharedText password;  ///< "set" or "not set"
};

} // namespace SparkplugMqtt
