#pragma once

#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"

#include <memory>

namespace PluginCommon
{

/// A plug-in that offers one protocol type, on all kinds of systems. `Protocol` has the constants `TYPE_NAME` and
/// `DISPLAY_NAME`, and a constructor that takes a `ControlProtocolEnviron`.
///
/// One line makes a library of it: `ZU_PLUGIN_ENTRY(PluginCommon::ProtocolPlugin<MyProtocol>::Make);`
template <typename Protocol>
class ProtocolPlugin final : public ZuControl::ControlPlugin
{
public:
    ProtocolPlugin()
    {
        auto const factory = std::make_shared<Factory>();
        ZuControl::ControlInfo info;
        info.SetTypeName(Protocol::TYPE_NAME).SetDisplayName(Protocol::DISPLAY_NAME).SetFactory(*factory);
        infos.push_back(info);
        factories.push_back(factory); // keeps the factory alive: the infos refer to it
    }

    static std::shared_ptr<ProtocolPlugin> Make()
    {
        return std::make_shared<ProtocolPlugin>();
    }

private:
    class Factory final : public ZuControl::IControlFactory
    {
    public:
        std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
        Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
        {
            return std::make_shared<Protocol>(environ);
        }
    };
};

} // namespace PluginCommon
