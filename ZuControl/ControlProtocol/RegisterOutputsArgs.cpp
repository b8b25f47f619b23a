#include "ZuControl/ControlProtocol/RegisterOutputsArgs.h"

namespace ZuControl::ControlProtocol
{

RegisterOutputsArgs::RegisterOutputsArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputsArgs::~RegisterOutputsArgs() = default;

} // namespace ZuControl::ControlProtocol
