#include "ZuControl/ControlProtocol/IProtocolOutput.h"

namespace ZuControl::ControlProtocol
{

IProtocolOutput::~IProtocolOutput() = default;

} // namespace ZuControl::ControlProtocol
