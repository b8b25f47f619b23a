#pragma once

#include "Host/CommandLine/Options.h"

namespace ZuControl
{
class IControlInstance;
}

namespace ZuHost
{

/// Sets one parameter of a protocol as a client would: validates the value, stores it and calls `ParamsUpdate`, all
/// inside one bracket of the update gate. `setting.key` may name a member of a group ("group.key"). For a text
/// parameter the value is used as it is; for any other it is parsed as JSON.
///
/// Throws `Zu::Status::BAD_ARGUMENT` with one line that names the parameter when there is no such parameter or it
/// refuses the value; nothing has changed then. If `ParamsUpdate` throws, the exception is nested in such a line and
/// keeps its status.
void SetParameter(ZuControl::IControlInstance& instance, ParameterSetting const& setting);

} // namespace ZuHost
