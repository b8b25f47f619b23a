#include "Plugins/AsciiTcp/AsciiMetrics.h"

namespace AsciiTcp
{

AsciiMetrics::AsciiMetrics() : Structure(true)
{
    Register("controlDrops", controlDrops);
    Register("listening", listening);
    Register("clients", clients);
    Register("acceptedClients", acceptedClients);
    Register("rejectedClients", rejectedClients);
    Register("droppedClients", droppedClients);
    Register("requests", requests);
    Register("errors", errors);
    Register("bytesIn", bytesIn);
    Register("bytesOut", bytesOut);
    Register("resultSets", resultSets);
    Register("lastHandlingUsec", lastHandlingUsec);
    Register("largestHandlingUsec", largestHandlingUsec);
    Register("lastText", lastText);
}

AsciiMetrics::~AsciiMetrics() = default;

} // namespace AsciiTcp
