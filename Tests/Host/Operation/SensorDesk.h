#pragma once

#include "Host/Module/PersistRegistry.h"
#include "Host/Module/SensorModule.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Operation/ControlAuthority.h"
#include "Host/Operation/SensorCommands.h"
#include "Host/Operation/SensorSettings.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Support/CallLog.h"
#include "Support/FakePlugin.h"
#include "Support/FakeProtocol.h"
#include "Support/RecordingTrail.h"
#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuPlugin/PluginManager.h"
#include "ZuRest/Caller.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuHost
{

/// A job manager whose loads do what the test sets.
class LoadedJobs final : public ZuCommon::PersistManager
{
public:
    using PersistManager::PersistManager;

    void LoadJob(std::string const& name) override
    {
        if (onLoad)
        {
            onLoad();
        }
        PersistManager::LoadJob(name);
    }

    std::function<void()> onLoad;
};

/// The simulated sensor with the module and one protocol, "Plc", which does nothing itself.
class SensorDesk : public testing::Test
{
protected:
    static constexpr ZuControl::ZuEthernetProtocol PLC{7};

    SensorDesk()
    {
        auto const plugin = std::make_shared<ZuTest::FakePlugin>();
        plugin->Offer("Plc", [this](ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) {
            operations = environ.operations;
            return std::make_shared<ZuTest::FakeProtocol>(calls, static_cast<int32>(PLC));
        });
        ZuTest::AddLib(plugins, {plugin});
        module.Build(plugins);
    }

    ZuRest::Answer Ask(std::string const& method, std::string const& path, std::string const& body = "",
                       std::string const& query = "", std::string const& accept = "")
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        request.query = query;
        request.accept = accept;
        auto caller = std::make_shared<ZuRest::Caller>();
        caller->name = "user anna";
        caller->source = "https 192.0.2.7";
        request.caller = caller;
        return module.RequestProcessor().Process(request).answer;
    }

    nlohmann::json Read(std::string const& path, std::string const& query = "")
    {
        ZuRest::Answer const answer = Ask("GET", path, "", query);
        EXPECT_EQ(answer.status, 200u) << answer.body;
        return nlohmann::json::parse(answer.body);
    }

    /// Status and sentence of a refusal.
    static std::string RefusalIn(ZuRest::Answer const& answer)
    {
        nlohmann::json const problem = nlohmann::json::parse(answer.body);
        return std::to_string(answer.status) + " " + problem.value("detail", "");
    }

    ZuTest::CallLog calls;
    ZuTest::RecordingTrail trail;
    ZuCommon::ProblemsManager problems;
    PersistRegistry registry;
    UpdateGate gate;
    LoadedJobs jobs{{"line 1", "line 2"}};
    ZuPlugin::PluginManager plugins;
    SensorModule module{{problems, registry, gate, jobs},
                        {Deployment::PHYSICAL_SENSOR, 1000, false},
                        std::make_unique<SimulatedPart>(SimulatedPart::Conveyor::STANDS_STILL)};
    ZuControl::ControlProtocolOperations* operations = nullptr; ///< as the protocol has it
    ControlAuthority authority;
    SensorSettings settings{registry, module.UsedSensor(), authority};
};

} // namespace ZuHost
