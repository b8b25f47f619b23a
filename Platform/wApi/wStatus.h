#pragma once

#include "wApi/wTypes.h"

/// What platform calls return and exceptions carry.
namespace Zu::Status
{

inline constexpr int32 SUCCESS = 1;
inline constexpr int32 FAILURE = 0; ///< a failure without a kind of its own
inline constexpr int32 BUSY = -976;
inline constexpr int32 FULL = -977;
inline constexpr int32 ID_CONFLICT = -980;
inline constexpr int32 WRITE_ONLY_REFUSED = -982;
inline constexpr int32 NOT_UPDATABLE = -983; ///< a document that cannot be updated
inline constexpr int32 BAD_FORMAT = -984;
inline constexpr int32 ALREADY_EXISTS = -987;
inline constexpr int32 UNSUPPORTED_VERSION = -989;
inline constexpr int32 WRONG_BUFFER_SIZE = -992;
inline constexpr int32 TIME_OUT = -993; ///< of a wait; silent and expected
inline constexpr int32 NOT_SUPPORTED = -996;
inline constexpr int32 BAD_ARGUMENT = -997;
inline constexpr int32 NOT_OFFERED = -998; ///< not offered, or a read that failed
inline constexpr int32 NOT_FOUND = -999;
inline constexpr int32 WRONG_STATE = -1000; ///< wrong state, or no implementation bound

} // namespace Zu::Status
