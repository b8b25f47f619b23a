#pragma once

#include "Plugins/Common/ClientCounters.h"

namespace AsciiTcp
{

using PluginCommon::Count;

/// Counters of the service since the last reset.
struct AsciiCounters final : PluginCommon::ClientCounters
{
    std::atomic<uint64> errors{0};              ///< refused requests
    std::atomic<uint64> resultSets{0};          ///< counted on the dispatcher's thread
    std::atomic<uint64> controlDrops{0};        ///< lines that a client missed because it was too slow
    std::atomic<uint64> lastHandlingUsec{0};    ///< of the last request, from its line to its answer
    std::atomic<uint64> largestHandlingUsec{0}; ///< written on the I/O thread only, except by a reset

    void Reset();
};

} // namespace AsciiTcp
