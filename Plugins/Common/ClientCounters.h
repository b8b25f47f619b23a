#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace PluginCommon
{

/// Counters of a server since the last reset. The I/O thread counts, any thread reads. The accesses are relaxed: no
/// counter is used to conclude anything about another.
struct ClientCounters
{
    std::atomic<uint64> clients{0}; ///< connected now; `Reset` does not change it
    std::atomic<uint64> acceptedClients{0};
    std::atomic<uint64> rejectedClients{0}; ///< accepted and closed at once, because maxClients were connected
    std::atomic<uint64> droppedClients{0};  ///< closed by the server for a fault or for silence
    std::atomic<uint64> requests{0};
    std::atomic<uint64> bytesIn{0};
    std::atomic<uint64> bytesOut{0};

    void Reset();
};

/// Adds `amount` to a counter.
inline void Count(std::atomic<uint64>& counter, uint64 amount = 1)
{
    counter.fetch_add(amount, std::memory_order_relaxed);
}

} // namespace PluginCommon
