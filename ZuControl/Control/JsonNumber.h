#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>

/// Reads numbers from JSON documents of other components, which are not validated.
///
/// A wrong type raises the JSON library's type error 302 ("type must be number, but is string"). The fraction of a
/// number is dropped; NaN gives 0.
namespace ZuControl::JsonNumber
{

/// The member of that name; null when `document` is no object, has no such member, or the member is null.
ZUCONTROL_INTERNAL_API nlohmann::json const* FindPresent(nlohmann::json const& document, char const* key);

/// An integer unchanged; an integer above the signed range wraps to a negative number. A floating-point number outside
/// the range gives the nearest end of the range.
ZUCONTROL_INTERNAL_API int64 ToInt64(nlohmann::json const& value);

/// An integer unchanged; a negative integer wraps, so that -1 gives the greatest number. A floating-point number above
/// the range gives the greatest number, and below 2^63 the result of `ToInt64` as an unsigned number.
ZUCONTROL_INTERNAL_API uint64 ToUint64(nlohmann::json const& value);

/// The low 32 bits of the result of `ToInt64`: 4294967296.5 gives 0. A boolean gives 0 or 1.
ZUCONTROL_INTERNAL_API uint32 ToUint32(nlohmann::json const& value);

} // namespace ZuControl::JsonNumber
