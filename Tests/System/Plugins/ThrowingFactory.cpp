#include "UnusablePlugin.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuPlugin/PluginEntry.h"

#include <stdexcept>

namespace
{

struct ThrowingFactory final : ZuControl::IControlFactory
{
    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& /*environ*/) override
    {
        throw std::runtime_error("no licence for this protocol");
    }
};

std::shared_ptr<ZuControl::ControlPlugin> Make()
{
    return std::make_shared<UnusablePlugin<ThrowingFactory>>("Unlicensed");
}

} // namespace

ZU_PLUGIN_ENTRY(Make);
