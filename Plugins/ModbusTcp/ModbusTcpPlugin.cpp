#include "Plugins/ModbusTcp/ModbusTcpPlugin.h"

#include "Plugins/ModbusTcp/ModbusTcpFactory.h"
#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"
#include "ZuControl/Control/ControlInfo.h"

namespace ModbusTcp
{

ModbusTcpPlugin::ModbusTcpPlugin()
{
    auto const factory = std::make_shared<ModbusTcpFactory>();
    ZuControl::ControlInfo info;
    info.SetTypeName(ModbusTcpProtocol::TYPE_NAME).SetDisplayName(ModbusTcpProtocol::DISPLAY_NAME).SetFactory(*factory);
    infos.push_back(info);
    factories.push_back(factory);
}

ModbusTcpPlugin::~ModbusTcpPlugin() = default;

std::shared_ptr<ModbusTcpPlugin> ModbusTcpPlugin::Make()
{
    return std::make_shared<ModbusTcpPlugin>();
}

} // namespace ModbusTcp
