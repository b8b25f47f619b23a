#include "Plugins/AsciiTcp/AsciiTcpFactory.h"

#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"

namespace AsciiTcp
{

std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
AsciiTcpFactory::Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ)
{
    return std::make_shared<AsciiTcpProtocol>(environ);
}

} // namespace AsciiTcp
