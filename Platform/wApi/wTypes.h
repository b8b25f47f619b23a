#pragma once

#include <cstddef>
#include <cstdint>

// Fixed-width integers under the names that the whole system uses. All data that leaves the process consists of them.
using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;

/// The result of a platform call: 1 is success, any other number is a failure (see wApi/wStatus.h).
using wStatus = int32;

/// A time-out without limit. All time-outs are microseconds.
inline constexpr uint64 wTIMEOUT_INFINITE = ~uint64{0};
