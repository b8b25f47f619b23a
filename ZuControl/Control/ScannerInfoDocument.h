#pragma once

#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuControl::ScannerInfoDocument
{

/// Fills laser, encoder and time of `info` from a scanner's document. A missing or null member reads as a laser that is
/// on, or as no reading. A member of a wrong type raises the JSON library's type error 302.
ZUCONTROL_INTERNAL_API void Read(nlohmann::json const& document, IControlScanEngineInterface::ScannerStateInfo& info);

} // namespace ZuControl::ScannerInfoDocument
