#include "ZuControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"

namespace ZuControl::ControlProtocol
{

IProtocolRegisterAssemblyGroup::~IProtocolRegisterAssemblyGroup() = default;

} // namespace ZuControl::ControlProtocol
