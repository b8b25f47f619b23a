#pragma once

#include "wApi/wTypes.h"

#include <cstdint>

/// Begins to fetch the memory `ahead` bytes behind `address`, to be written soon. It need not belong to the object, nor to the
/// process: a hint that cannot be followed does nothing.
inline void wPrefetch_ForWrite(void const* address, uint64 ahead) noexcept
{
    auto const wanted = reinterpret_cast<std::uintptr_t>(address) + ahead;
#ifdef __x86_64__
    // By name: the compiler's own prefetch fetches for reading, unless it is told more of the processor.
    asm volatile("prefetchw (%0)" : : "r"(wanted));
#else
    __builtin_prefetch(reinterpret_cast<void const*>(wanted), 1);
#endif
}
