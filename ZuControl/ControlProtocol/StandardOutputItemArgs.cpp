#include "ZuControl/ControlProtocol/StandardOutputItemArgs.h"

namespace ZuControl::ControlProtocol
{

StandardOutputItemArgs::StandardOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

StandardOutputItemArgs::~StandardOutputItemArgs() = default;

} // namespace ZuControl::ControlProtocol
