#pragma once

#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuPlugin/PluginManager.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ZuTest
{

/// Makes protocols with a function of the test.
class FakeFactory final : public ZuControl::IControlFactory
{
public:
    using Make = std::function<std::shared_ptr<ZuControl::ControlProtocol::IProtocol>(
        ZuControl::ControlProtocol::ControlProtocolEnviron const&)>;

    explicit FakeFactory(Make makeProtocol) : make(std::move(makeProtocol))
    {
    }

    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
    {
        return make(environ);
    }

private:
    Make const make;
};

/// Offers the types that a test adds to it.
class FakePlugin final : public ZuControl::ControlPlugin
{
public:
    FakePlugin() = default;

    FakePlugin& Offer(ZuControl::ControlInfo info, FakeFactory::Make make = {})
    {
        if (make)
        {
            auto const factory = std::make_shared<FakeFactory>(std::move(make));
            factories.push_back(factory);
            info.SetFactory(*factory);
        }
        infos.push_back(info);
        return *this;
    }

    FakePlugin& Offer(char const* typeName, FakeFactory::Make make = {})
    {
        return Offer(ZuControl::ControlInfo().SetTypeName(typeName), std::move(make));
    }
};

/// Puts plug-ins into the manager as one library.
inline void AddLib(ZuPlugin::PluginManager& manager, std::vector<std::shared_ptr<ZuPlugin::IPlugin>> plugins)
{
    manager.Add(std::make_unique<ZuPlugin::PluginLib>("test.so", std::move(plugins)));
}

} // namespace ZuTest
