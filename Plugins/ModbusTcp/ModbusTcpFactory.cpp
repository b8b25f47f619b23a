#include "Plugins/ModbusTcp/ModbusTcpFactory.h"

#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"

namespace ModbusTcp
{

std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
ModbusTcpFactory::Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ)
{
    return std::make_shared<ModbusTcpProtocol>(environ);
}

} // namespace ModbusTcp
