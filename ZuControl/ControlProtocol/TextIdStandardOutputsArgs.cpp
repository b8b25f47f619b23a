#include "ZuControl/ControlProtocol/TextIdStandardOutputsArgs.h"

namespace ZuControl::ControlProtocol
{

TextIdStandardOutputsArgs::TextIdStandardOutputsArgs() = default;
TextIdStandardOutputsArgs::~TextIdStandardOutputsArgs() = default;

} // namespace ZuControl::ControlProtocol
