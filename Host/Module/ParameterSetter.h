#pragma once

#include "Host/CommandLine/Options.h"

namespace ZuControl
{
class IControlInstance;
}

namespace ZuHost
{

/// Sets one parameter of a protocol as a client would: the value is validated, then stored, and the protocol takes it over,
/// all in one bracket of the update gate. `setting.key` may go down into a record ("group.key"); the value is taken as it
/// stands for a text, and read as JSON for anything else.
/// Throws -997 with one line that names the parameter when there is none of this name or it refuses the value; nothing has
/// changed then. What the protocol throws when it takes the value over goes on with such a line too.
void SetParameter(ZuControl::IControlInstance& instance, ParameterSetting const& setting);

} // namespace ZuHost
