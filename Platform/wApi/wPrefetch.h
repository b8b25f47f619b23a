#pragma once

#include "wApi/wTypes.h"

#include <cstdint>

/// Starts to load the memory `ahead` bytes after `address` into the cache, for writing. The memory need not belong to
/// the object or to the process: the processor ignores a prefetch of an unmapped address.
inline void wPrefetch_ForWrite(void const* address, uint64 ahead) noexcept
{
    auto const wanted = reinterpret_cast<std::uintptr_t>(address) + ahead;
#ifdef __x86_64__
    // Inline assembly: by default `__builtin_prefetch` emits a prefetch for reading on this processor.
    asm volatile("prefetchw (%0)" : : "r"(wanted));
#else
    __builtin_prefetch(reinterpret_cast<void const*>(wanted), 1);
#endif
}
