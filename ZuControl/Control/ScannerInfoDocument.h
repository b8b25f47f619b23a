#pragma once

#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuControl::ScannerInfoDocument
{

/// Fills laser, encoder and time of `info` from what a scanner told of itself. What is missing or null reads as a laser that
/// is on, or as no reading; what has a wrong type raises the JSON library's type error 302.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlScanEngineInterface::ScannerStateInfo& info);

} // namespace ZuControl::ScannerInfoDocument
