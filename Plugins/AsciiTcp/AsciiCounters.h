#pragma once

#include "Plugins/Common/ClientCounters.h"

namespace AsciiTcp
{

using PluginCommon::Count;

/// What the service has done since the last reset.
struct AsciiCounters final : PluginCommon::ClientCounters
{
    std::atomic<uint64> errors{0};              ///< requests that were refused
    std::atomic<uint64> resultSets{0};          ///< counted on the dispatcher's thread
    std::atomic<uint64> controlDrops{0};        ///< lines that a client was too slow for
    std::atomic<uint64> lastHandlingUsec{0};    ///< of the newest request, from its line to its answer
    std::atomic<uint64> largestHandlingUsec{0}; ///< written on the I/O thread alone, but for a reset

    void Reset();
};

} // namespace AsciiTcp
