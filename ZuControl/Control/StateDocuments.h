#pragma once

#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Control/IControlSystemInterface.h"
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

namespace ZuControl::ScannerInfoDocument
{

/// Fills laser, encoder and time of `info` from a scanner's document. A missing or null member reads as a laser that is
/// on, or as no reading. A member of a wrong type raises the JSON library's type error 302.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlScanEngineInterface::ScannerStateInfo& info);

} // namespace ZuControl::ScannerInfoDocument

namespace ZuControl::SystemMetricsDocument
{

/// Fills the times and the links of `stats` from the core's metrics. A missing or null time reads as all ones, missing
/// links as no links. A member of a wrong type raises the JSON library's exception; the members that are filled before
/// it stay filled.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlSystemInterface::SystemStats& stats);

} // namespace ZuControl::SystemMetricsDocument
