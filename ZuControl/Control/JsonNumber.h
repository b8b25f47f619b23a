#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>

/// Reads numbers from JSON documents of other components, which are not validated.
///
/// A wrong type raises the JSON library's type error 302 ("type must be number, but is string"). The fraction of a number is
/// dropped; NaN gives 0.
namespace ZuControl::JsonNumber
{

/// The member of that name; null when `document` is no object, has no such member, or the member is null.
ZUCONTROL_INTERNAL_API nlohmann::json const* FindPresent(nlohmann::json const& document, char const* key);

/// An integer as it stands; one above the signed range wraps to a negative number. A number with a fraction that lies outside
/// the range gives the nearest end.
ZUCONTROL_INTERNAL_API int64 ToInt64(nlohmann::json const& value);

/// An integer as it stands; a negative one wraps, so that -1 gives the greatest number. A number with a fraction gives the
/// greatest number above the range, and below 2^63 what `ToInt64` gives, as an unsigned number.
ZUCONTROL_INTERNAL_API uint64 ToUint64(nlohmann::json const& value);

/// The low 32 bits of what `ToInt64` gives: 4294967296.5 gives 0. A boolean gives 0 or 1.
ZUCONTROL_INTERNAL_API uint32 ToUint32(nlohmann::json const& value);

} // namespace ZuControl::JsonNumber
