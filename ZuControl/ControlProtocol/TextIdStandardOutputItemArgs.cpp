#include "ZuControl/ControlProtocol/TextIdStandardOutputItemArgs.h"

namespace ZuControl::ControlProtocol
{

TextIdStandardOutputItemArgs::TextIdStandardOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

TextIdStandardOutputItemArgs::~TextIdStandardOutputItemArgs() = default;

} // namespace ZuControl::ControlProtocol
