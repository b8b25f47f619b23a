#include "Plugins/AsciiTcp/AsciiTcpPlugin.h"

#include "Plugins/AsciiTcp/AsciiTcpFactory.h"
#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"
#include "ZuControl/Control/ControlInfo.h"

namespace AsciiTcp
{

AsciiTcpPlugin::AsciiTcpPlugin()
{
    auto const factory = std::make_shared<AsciiTcpFactory>();
    ZuControl::ControlInfo info;
    info.SetTypeName(AsciiTcpProtocol::TYPE_NAME).SetDisplayName(AsciiTcpProtocol::DISPLAY_NAME).SetFactory(*factory);
    infos.push_back(info);
    factories.push_back(factory);
}

AsciiTcpPlugin::~AsciiTcpPlugin() = default;

std::shared_ptr<AsciiTcpPlugin> AsciiTcpPlugin::Make()
{
    return std::make_shared<AsciiTcpPlugin>();
}

} // namespace AsciiTcp
