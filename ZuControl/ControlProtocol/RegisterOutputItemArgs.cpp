#include "ZuControl/ControlProtocol/RegisterOutputItemArgs.h"

namespace ZuControl::ControlProtocol
{

RegisterOutputItemArgs::RegisterOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputItemArgs::~RegisterOutputItemArgs() = default;

} // namespace ZuControl::ControlProtocol
