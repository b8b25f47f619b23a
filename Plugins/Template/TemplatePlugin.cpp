#include "TemplateProtocol.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

class TemplateFactory final : public ZuControl::IControlFactory
{
public:
    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
    {
        return std::make_shared<TemplateProtocol>(environ);
    }
};

class TemplatePlugin final : public ZuControl::ControlPlugin
{
public:
    TemplatePlugin()
    {
        auto const factory = std::make_shared<TemplateFactory>();
        ZuControl::ControlInfo info;
        info.SetTypeName(TemplateProtocol::TYPE_NAME)
            .SetDisplayName(TemplateProtocol::DISPLAY_NAME)
            .SetFactory(*factory);
        infos.push_back(info);
        factories.push_back(factory); // keeps the factory alive: the infos refer to it
    }

    static std::shared_ptr<TemplatePlugin> Make()
    {
        return std::make_shared<TemplatePlugin>();
    }
};

} // namespace

ZU_PLUGIN_ENTRY(TemplatePlugin::Make);
