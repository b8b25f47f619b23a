#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace ZuControl::ControlProtocol
{

IProtocolRegisterAssembly::~IProtocolRegisterAssembly() = default;

} // namespace ZuControl::ControlProtocol
