#pragma once

#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/Export.h"

#include <memory>

namespace ZuControl::ControlProtocol
{

class IProtocolOutput;

/// A copy for a preview; null for a map of another class than those of this library. Waits for the map's lock.
ZUCONTROL_INTERNAL_API std::unique_ptr<LayoutCopy> MakeCopyOf(IProtocolOutput const& original);

} // namespace ZuControl::ControlProtocol
