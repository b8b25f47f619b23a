#pragma once

#include "Plugins/Common/TcpMetrics.h"
#include "ZuApi/Properties/SharedText.h"

namespace AsciiTcp
{

using PluginCommon::Count;

/// The counters of the service since its construction. The control drops are lines that a client missed because it was
/// too slow.
struct AsciiCounters final : PluginCommon::TcpCounters
{
    Counter errors{0}; ///< refused requests
};

/// The metrics of the service. Numbers count from the last reset, unless their title says "now". Any thread may read
/// them during an update.
class AsciiMetrics final : public PluginCommon::TcpMetrics
{
public:
    explicit AsciiMetrics(AsciiCounters const& counters);
    ~AsciiMetrics() override;

    Zu::Properties::SharedText lastText; ///< the last text that the command sendText has sent
};

} // namespace AsciiTcp
