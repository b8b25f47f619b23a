#include "ZuControl/ControlProtocol/IProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

IProtocolRegisterBlockFactory::~IProtocolRegisterBlockFactory() = default;

} // namespace ZuControl::ControlProtocol
