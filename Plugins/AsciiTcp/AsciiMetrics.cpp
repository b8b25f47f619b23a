#include "Plugins/AsciiTcp/AsciiMetrics.h"

namespace AsciiTcp
{

AsciiMetrics::AsciiMetrics(AsciiCounters const& counters) : TcpMetrics(counters)
{
    AddCounter("errors", "Requests refused", counters.errors);
    AddTraffic(counters);
    AddHandling(counters);
    Register("lastText", lastText);
}

AsciiMetrics::~AsciiMetrics() = default;

} // namespace AsciiTcp
