#pragma once

#include "Plugins/Common/StateFetcher.h"
#include "Plugins/SparkplugMqtt/MetricWriter.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace SparkplugMqtt
{

/// The state of system and scanner as metrics of the device. Used on the network thread only.
class SystemMetrics final
{
public:
    /// Keeps the present state.
    void Take(PluginCommon::StateFetcher::State const& state);

    /// Appends the metrics that have changed since the last call and the last birth.
    void WriteChanges(MetricWriter& writer, uint64 utcMsec);

    /// Appends all metrics, and their aliases.
    void WriteBirth(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases);

private:
    struct Values
    {
        std::string runState = "unknown";
        std::string job;
        uint32 alignment = 0;
        bool isLaserOn = false;
        uint32 problems = 0;
    };

    void Write(MetricWriter& writer, uint64 utcMsec, std::vector<uint64>* aliases);

    Values present;
    Values told;
};

} // namespace SparkplugMqtt
