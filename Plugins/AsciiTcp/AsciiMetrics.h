#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "wApi/wTypes.h"

#include <string>

namespace AsciiTcp
{

/// What the service tells of itself. The numbers count from the last reset, but for those that say "now".
struct AsciiMetrics final : public Zu::Properties::Structure
{
public:
    AsciiMetrics();
    ~AsciiMetrics() override;
    AsciiMetrics(AsciiMetrics const&) = delete;
    AsciiMetrics& operator=(AsciiMetrics const&) = delete;

    using Number = Zu::Properties::Value<uint64>;

    Number controlDrops;                          ///< lines that were not sent because a client was too slow for them
    Zu::Properties::Value<std::string> listening; ///< "127.0.0.1:5025" now, empty while stopped
    Number clients;                               ///< connected now
    Number acceptedClients;
    Number rejectedClients; ///< beyond the cap
    Number droppedClients;  ///< for silence, not taking what waits for them, or by command
    Number requests;
    Number errors; ///< requests that were refused
    Number bytesIn;
    Number bytesOut;
    Number resultSets;
    Number lastHandlingUsec;                     ///< of the newest request
    Number largestHandlingUsec;                  ///< of all requests
    Zu::Properties::Value<std::string> lastText; ///< the last text that the command sendText sent
};

} // namespace AsciiTcp
