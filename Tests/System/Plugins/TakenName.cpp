#include "UnusablePlugin.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

/// Never asked: the type stands in the catalogue already.
struct EmptyFactory final : ZuControl::IControlFactory
{
    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& /*environ*/) override
    {
        return nullptr;
    }
};

std::shared_ptr<ZuControl::ControlPlugin> Make()
{
    return std::make_shared<UnusablePlugin<EmptyFactory>>("ModbusTcp");
}

} // namespace

ZU_PLUGIN_ENTRY(Make);
