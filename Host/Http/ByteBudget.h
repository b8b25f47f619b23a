#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace ZuHost
{

/// Bounds the bytes that all connections hold together. All operations are thread-safe.
class ByteBudget final
{
public:
    explicit ByteBudget(uint64 newLimit) noexcept : limit(newLimit)
    {
    }

    ~ByteBudget() = default;
    ByteBudget(ByteBudget const&) = delete;
    ByteBudget& operator=(ByteBudget const&) = delete;

    /// Takes `bytes` of the budget. Returns false, and takes nothing, if fewer are left.
    [[nodiscard]] bool Take(uint64 bytes) noexcept
    {
        if (taken.fetch_add(bytes, std::memory_order_relaxed) + bytes <= limit)
        {
            return true;
        }
        GiveBack(bytes);
        return false;
    }

    /// Returns `bytes` that `Take` has taken.
    void GiveBack(uint64 bytes) noexcept
    {
        taken.fetch_sub(bytes, std::memory_order_relaxed);
    }

private:
    uint64 const limit;
    std::atomic<uint64> taken = 0; // a count alone: it publishes no other data
};

} // namespace ZuHost
