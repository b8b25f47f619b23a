#include "Plugins/SparkplugMqtt/SparkplugMetrics.h"

namespace SparkplugMqtt
{

SparkplugMetrics::SparkplugMetrics(SparkplugCounters const& counters)
{
    AddCounter("controlDrops", "Samples that were never sent", counters.controlDrops);
    Register("session", session);
    Register("server", server);
    Register("dataTopic", dataTopic);
    Register("password", password);
    AddCounter("births", "Births published", counters.births);
    AddCounter("dataMessages", "Data messages published", counters.dataMessages);
    AddCounter("historicalMessages", "Data messages published again as historical", counters.historicalMessages);
    AddCounter("commands", "Command messages taken", counters.commands);
    AddCounter("badMessages", "Messages received that cannot be read", counters.badMessages);
    AddCounter("rebirthRequests", "Rebirths requested by hosts", counters.rebirthRequests);
    AddCounter("lostSessions", "Sessions that ended after their birth", counters.lostSessions);
    AddCounter("clockJumps", "Jumps of the machine's clock", counters.clockJumps);
    AddCounter("bytesOut", "Bytes published", counters.bytesOut);
    AddGauge("storedSamples", "Samples in the store now", counters.storedSamples);
    AddGauge("storedBytes", "Bytes in the store now", counters.storedBytes);
    AddGauge("unsentSamples", "Samples in the store now that wait to be sent", counters.unsentSamples);
}

SparkplugMetrics::~SparkplugMetrics() = default;

} // namespace SparkplugMqtt
