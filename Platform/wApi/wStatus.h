#pragma once

#include "wApi/wTypes.h"

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
