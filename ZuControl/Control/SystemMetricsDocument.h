#pragma once

#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuControl::SystemMetricsDocument
{

/// Fills the times and the links of `stats` from the core's metrics. What is missing or null reads as all ones, or as no link
/// at all; what has a wrong type raises the JSON library's exception, and what was filled before it stays filled.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlSystemInterface::SystemStats& stats);

} // namespace ZuControl::SystemMetricsDocument
