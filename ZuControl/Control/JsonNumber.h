#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>

/// Members of JSON documents that others filled, as numbers.
///
/// A wrong type raises the JSON library's type error 302 ("type must be number, but is string"). A number with a fraction is
/// cut towards zero, one beyond the range gives the nearest end of it, and what is no number at all (NaN) gives 0.
namespace ZuControl::JsonNumber
{

/// The member of that name; null when `document` is no object, has no such member, or the member is null.
ZUCONTROL_INTERNAL_API nlohmann::json const* FindPresent(nlohmann::json const& document, char const* key);

/// Integers as they stand.
ZUCONTROL_INTERNAL_API uint64 ToUint64(nlohmann::json const& value);
ZUCONTROL_INTERNAL_API int64 ToInt64(nlohmann::json const& value);

/// The low 32 bits of integers; a boolean is 0 or 1.
ZUCONTROL_INTERNAL_API uint32 ToUint32(nlohmann::json const& value);

} // namespace ZuControl::JsonNumber
