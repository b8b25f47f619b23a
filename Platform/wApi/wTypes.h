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

/// The result of a platform call: 1 is success, any other number is a failure (see `Zu::Status`).
using wStatus = int32;

/// A time-out without limit. All time-outs are microseconds.
inline constexpr uint64 wTIMEOUT_INFINITE = ~uint64{0};

/// The statuses that platform calls return and that exceptions carry.
namespace Zu::Status
{

inline constexpr int32 SUCCESS = 1;
inline constexpr int32 FAILURE = 0; ///< a failure of no particular kind
inline constexpr int32 BUSY = -976;
inline constexpr int32 FULL = -977;
inline constexpr int32 ID_CONFLICT = -980;
inline constexpr int32 WRITE_ONLY_REFUSED = -982;
inline constexpr int32 NOT_UPDATABLE = -983; ///< the document cannot be updated
inline constexpr int32 BAD_FORMAT = -984;
inline constexpr int32 ALREADY_EXISTS = -987;
inline constexpr int32 UNSUPPORTED_VERSION = -989;
inline constexpr int32 WRONG_BUFFER_SIZE = -992;
inline constexpr int32 TIME_OUT = -993; ///< the time limit of a wait has passed; expected, not logged
inline constexpr int32 NOT_SUPPORTED = -996;
inline constexpr int32 BAD_ARGUMENT = -997;
inline constexpr int32 NOT_OFFERED = -998; ///< the operation is not offered, or a read failed
inline constexpr int32 NOT_FOUND = -999;
inline constexpr int32 WRONG_STATE = -1000; ///< wrong state, or no implementation bound

} // namespace Zu::Status
