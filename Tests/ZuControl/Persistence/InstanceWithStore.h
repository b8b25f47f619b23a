#pragma once

#include "Support/FakeHost.h"
#include "Support/FakePersistStore.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeSystemInterface.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlInstance.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Persistence/ConfigurableProtocol.h"
#include "ZuControl/Persistence/PersistControl.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace ZuControl
{

/// One instance of the type "x" around a configurable protocol, with a store in memory and the recorded log.
class InstanceWithStore : public testing::Test
{
protected:
    using Json = nlohmann::json;
    using Calls = ZuTest::CallLog::Calls;

    static constexpr char const* PATH = "/controls/x/config.json";

    // One object for the whole suite, because its destruction is slow. The tests do not use it.
    struct Operations
    {
        ZuTest::CallLog calls;
        ZuTest::FakeSystemInterface system{calls};
        ZuTest::FakeScanEngineInterface engine{calls};
        ControlProtocolOperations operations{system, engine};
    };

    static void SetUpTestSuite()
    {
        operations = std::make_unique<Operations>();
    }

    static void TearDownTestSuite()
    {
        operations.reset();
    }

    InstanceWithStore()
    {
        environ.operations = &operations->operations;
        environ.deployment = &deployment;
        environ.problems = &problems;
        info.SetTypeName("x");
    }

    void Build(ProtocolParts const& parts)
    {
        instance.reset();
        protocol = std::make_shared<ConfigurableProtocol>(environ, hooks, parts);
        ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};
        instance = std::make_unique<ControlInstance>(params);
        control.Init(*instance, ZuCommon::PersistDomain::JOB, store); // the defaults of a new job
        Forget();
    }

    /// Clears the recorded calls and log lines.
    void Forget()
    {
        hooks.calls.Clear();
        log.Clear();
    }

    void Store(Json const& document)
    {
        store.files[PATH] = document.dump();
    }

    /// Stores a document of the job domain with these settings beside the enabled state of the instance.
    void StoreSettings(Json settings)
    {
        settings.emplace("enabled", instance->IsEnabled());
        Store({{"version", "1"}, {"zu:control", settings}});
    }

    void Load()
    {
        control.Load(*instance, ZuCommon::PersistDomain::JOB, store);
    }

    void Save()
    {
        control.Save(*instance, ZuCommon::PersistDomain::JOB, store);
    }

    /// The settings that a save writes now. The save itself leaves no recorded call or log line.
    Json Settings()
    {
        ZuTest::FakePersistStore other;
        control.Save(*instance, ZuCommon::PersistDomain::JOB, other);
        return Json::parse(other.files.at(PATH)).at("zu:control");
    }

    /// Ids and sources of the output map, or ids and types of the blocks of an assembly, in their order: "5 a, 7 b".
    std::string Entries()
    {
        return Listed(Settings().at("outputs").at("map"), "source");
    }

    std::string Blocks(std::size_t assembly = 0)
    {
        return Listed(Settings().at("registerAssemblyList").at(assembly).at("blocks"), "type");
    }

    class HookedGate final : public IUpdateGate
    {
    public:
        explicit HookedGate(Hooks& sharedHooks) : hooks(sharedHooks)
        {
        }

        void BeginUpdate(bool /*exclusive*/) override
        {
            hooks.Note("BeginUpdate");
        }

        void EndUpdate() override
        {
            hooks.Note("EndUpdate");
        }

    private:
        Hooks& hooks;
    };

    Hooks hooks;
    static inline std::unique_ptr<Operations> operations;
    ZuTest::FakeDeployment deployment;
    ZuTest::FakeScanResults scanResults{hooks.calls};
    ZuCommon::ProblemsManager problems;
    HookedGate gate{hooks};
    ControlProtocol::ControlProtocolEnviron environ;
    ControlInfo info;
    ZuTest::LogRecorder log;
    ZuTest::FakePersistStore store;
    PersistControl control;
    std::shared_ptr<ConfigurableProtocol> protocol;
    std::unique_ptr<ControlInstance> instance;

private:
    static std::string Listed(Json const& list, char const* what)
    {
        std::string text;
        for (Json const& entry : list)
        {
            Json const& id = entry.at("outputId");
            text += (text.empty() ? "" : ", ") + (id.is_string() ? id.get<std::string>() : id.dump()) + " " +
                    entry.at(what).get<std::string>();
        }
        return text;
    }
};

} // namespace ZuControl
