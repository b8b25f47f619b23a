#pragma once

#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace ZuHost
{

/// Since when a connection has been idle. All operations are thread-safe.
class IdleClock final
{
public:
    /// Starts the idle time, goes on with it, or ends it.
    void Note(bool isIdle) noexcept
    {
        if (!isIdle)
        {
            sinceUsec.store(0, std::memory_order_relaxed);
        }
        else if (SinceUsec() == 0)
        {
            sinceUsec.store(wTime_NowUsec(), std::memory_order_relaxed);
        }
    }

    /// The start of the idle time, on the clock of `wTime_NowUsec`; 0 while the connection is busy.
    uint64 SinceUsec() const noexcept
    {
        return sinceUsec.load(std::memory_order_relaxed);
    }

private:
    std::atomic<uint64> sinceUsec = 0; // a time alone: it publishes no other data
};

} // namespace ZuHost
