#pragma once

#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuControl::SystemMetricsDocument
{

/// Fills the times and the links of `stats` from the core's metrics. A missing or null time reads as all ones, missing
/// links as no links. A member of a wrong type raises the JSON library's exception; the members that are filled before
/// it stay filled.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlSystemInterface::SystemStats& stats);

} // namespace ZuControl::SystemMetricsDocument
