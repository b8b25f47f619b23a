#pragma once

#include "Fuzz/Support/MapProtocol.h"
#include "Support/FakeHost.h"
#include "Support/FakePlugin.h"
#include "Support/FakeUpdateGate.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <array>
#include <optional>

namespace ZuFuzz
{

/// The module as a host builds it, with one protocol for each kind of output map: "Numbers", "Registers", "Texts".
/// Construction and destruction are slow: all runs of a process share one module, which is reset between them.
class ModuleUnderFuzz final : private ZuControl::IPersistRegistry
{
public:
    static constexpr std::array PROTOCOLS{"Numbers", "Registers", "Texts"};

    ModuleUnderFuzz()
    {
        using namespace ZuControl::ControlProtocol;
        auto const plugin = std::make_shared<ZuTest::FakePlugin>();
        Offer<MapProtocol<StandardProtocolOutputMap, MOST_ITEMS, 0, 99>>(*plugin, "Numbers", 101);
        Offer<MapProtocol<RegisterProtocolOutputMap, 0, 200, 2, MOST_ITEMS>>(*plugin, "Registers", 102);
        Offer<MapProtocol<TextIdStandardProtocolOutputMap, MOST_ITEMS>>(*plugin, "Texts", 103);
        ZuTest::AddLib(plugins, {plugin});
        environ.deployment = &deployment;
        environ.problems = &problems;
        environ.updateGate = &gate;
        environ.persistRegistry = this;
        deployment.physicalSensor = true;
        module.emplace(plugins, router, environ);
        Reset();
    }

    ModuleUnderFuzz(ModuleUnderFuzz const&) = delete;
    ModuleUnderFuzz& operator=(ModuleUnderFuzz const&) = delete;

    /// Restores the state after construction, with a new job.
    void Reset()
    {
        for (char const* const protocol : PROTOCOLS)
        {
            manager->GetInstance(protocol).ResetInstance(false, ZuControl::IControlInstance::DataToResetAll);
        }
        calls.Clear();
    }

    ZuControl::IControlManager& Controls()
    {
        return *manager;
    }

    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};

private:
    static constexpr uint16 MOST_ITEMS = 16;

    template <typename Protocol>
    static void Offer(ZuTest::FakePlugin& plugin, char const* name, int32 number)
    {
        plugin.Offer(name, [name, number](ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) {
            return std::make_shared<Protocol>(number, name, environ);
        });
    }

    uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& /*name*/) override
    {
        manager = &dynamic_cast<ZuControl::IControlManager&>(handler);
        return 1;
    }

    void Deregister(uint64 /*id*/) override
    {
    }

    void MarkModified(ZuCommon::IPersistHandler& /*handler*/, ZuCommon::PersistDomain /*domain*/,
                      uint64 /*reserved*/) override
    {
    }

    ZuControl::IControlManager* manager = nullptr;
    ZuTest::CallLog calls;
    ZuTest::FakeDeployment deployment;
    ZuTest::FakeUpdateGate gate{calls};
    ZuCommon::ProblemsManager problems;
    ZuPlugin::PluginManager plugins;
    ZuControl::ControlModuleEnviron environ;
    std::optional<ZuControl::ControlModule> module; // last: it uses all of the above
};

} // namespace ZuFuzz
