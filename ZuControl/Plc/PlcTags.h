#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Plc/PlcTag.h"

namespace ZuControl
{
class IControlInstance;
}

namespace ZuControl::Plc
{

/// The tags in the register assemblies of a service, without the fingerprint. A block that does not describe its fields
/// is one tag of the type RAW. Waits for the locks of the assemblies. Throws `Zu::Status::NOT_SUPPORTED` for a service
/// without register assemblies.
ZUCONTROL_INTERNAL_API PlcTagList ReadTags(IControlInstance& instance);

} // namespace ZuControl::Plc
