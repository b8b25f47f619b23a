#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace PluginCommon
{

/// What a server has done since the last reset. Counted on the I/O thread, read anywhere: relaxed, since no count says
/// anything about another.
struct ClientCounters
{
    std::atomic<uint64> clients{0}; ///< connected now; a reset leaves it alone
    std::atomic<uint64> acceptedClients{0};
    std::atomic<uint64> rejectedClients{0}; ///< accepted and closed at once, beyond the cap
    std::atomic<uint64> droppedClients{0};  ///< closed by the server for what they did or did not do
    std::atomic<uint64> requests{0};
    std::atomic<uint64> bytesIn{0};
    std::atomic<uint64> bytesOut{0};

    void Reset();
};

/// One more of something.
inline void Count(std::atomic<uint64>& counter, uint64 amount = 1)
{
    counter.fetch_add(amount, std::memory_order_relaxed);
}

} // namespace PluginCommon
