#include "ZuControl/ControlProtocol/IProtocol.h"

namespace ZuControl::ControlProtocol
{

IProtocol::~IProtocol() = default;

} // namespace ZuControl::ControlProtocol
