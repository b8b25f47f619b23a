#include "ZuControl/ControlProtocol/StandardOutputsArgs.h"

namespace ZuControl::ControlProtocol
{

StandardOutputsArgs::StandardOutputsArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

StandardOutputsArgs::~StandardOutputsArgs() = default;

} // namespace ZuControl::ControlProtocol
