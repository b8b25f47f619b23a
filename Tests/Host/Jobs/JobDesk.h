#pragma once

#include "Host/Jobs/JobManager.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Retry/StartRetry.h"
#include "Host/Store/DataFolder.h"
#include "Support/CallLog.h"
#include "Support/FakeControlInstance.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/IControlManager.h"

#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <set>
#include <string>

namespace ZuTest
{

/// Protocols with one value each, saved as "value" of their settings in a job, and with one text in their own domain.
class ValueKeepers final : public ZuControl::IControlManager
{
public:
    using Domain = ZuCommon::PersistDomain;

    std::string Component() override
    {
        return "keepers";
    }

    void InitPersistDomain(Domain domain, ZuCommon::IPersistStore& store) override
    {
        calls.Add("init " + std::to_string(static_cast<int>(domain)));
        for (auto& [type, value] : values)
        {
            value = "default";
        }
        if (domain == Domain::PROTOCOL)
        {
            Write(store, "One", "\"born\"");
        }
    }

    void LoadPersistDomain(Domain domain, ZuCommon::IPersistStore const& store) override
    {
        calls.Add("load " + std::to_string(static_cast<int>(domain)));
        bool hasFailed = false;
        for (auto& [type, value] : values)
        {
            std::string const path = PathOf(type);
            if (!store.Exists(path))
            {
                continue;
            }
            std::string const text = store.Read(path);
            if (onRead)
            {
                onRead(text);
            }
            nlohmann::json const document = nlohmann::json::parse(text);
            if (domain == Domain::PROTOCOL)
            {
                own = document;
                continue;
            }
            if (!document.is_object() || document.value("version", "") != "1")
            {
                hasFailed = true;
                ZU_LOG_USER_WARNING("Unsupported configuration file version for service %1$s.", type.c_str());
                continue;
            }
            value = document.at("zu:control").at("parameters").at("value");
            if (value == "refused")
            {
                value = "default";
                hasFailed = true;
                ZU_LOG_USER_WARNING("Error loading parameters for service %1$s.", type.c_str());
            }
        }
        if (onLoad)
        {
            onLoad();
        }
        if (hasFailed)
        {
            registry->MarkModified(*this, Domain::JOB, 0);
        }
    }

    void SavePersistDomain(Domain domain, ZuCommon::IPersistStore& store) override
    {
        calls.Add("save " + std::to_string(static_cast<int>(domain)));
        if (domain == Domain::PROTOCOL)
        {
            Zu::GuardStep(__LINE__, __FILE__, "ZuControl::ControlManager::SavePersistDomain",
                          "EXCEPTION THROWN: ", [&] { Write(store, "One", own.dump()); });
            return;
        }
        for (auto const& one : values)
        {
            Zu::GuardStep(__LINE__, __FILE__, "ZuControl::ControlManager::SavePersistDomain", "EXCEPTION THROWN: ",
                          [&] { Write(store, one.first, DocumentToSave(one.second, !stopped.contains(one.first))); });
        }
    }

    /// Throws as the JSON library does for a text that is not UTF-8.
    static std::string DocumentToSave(std::string const& value, bool isEnabled)
    {
        nlohmann::json document = nlohmann::json::parse(DocumentWith("", isEnabled));
        document["zu:control"]["parameters"]["value"] = value;
        return document.dump();
    }

    std::vector<std::string> List() const override
    {
        std::vector<std::string> list;
        for (auto const& [type, value] : values)
        {
            list.push_back(type);
        }
        return list;
    }

    ZuControl::IControlInstance& GetInstance(std::string const& typeName) override
    {
        calls.Add("instance " + typeName);
        auto& instance = instances[typeName];
        instance = std::make_unique<FakeControlInstance>(calls, typeName);
        return *instance;
    }

    CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> /*handler*/) override
    {
        return {};
    }

    void RemovePersistenceLoadEventHandler(CallbackId /*id*/) override
    {
    }

    static std::string DocumentWith(std::string const& value, bool enabled = true)
    {
        return R"({"version":"1","zu:control":{"enabled":)" + std::string(enabled ? "true" : "false") +
               R"(,"parameters":{"value":")" + value + "\"}}}";
    }

    /// A change by a client.
    void Set(std::string const& type, std::string const& value)
    {
        Put(type, value);
        registry->MarkModified(*this, Domain::JOB, 0);
    }

    /// Changes the value of `type` without marking the job as modified.
    void Put(std::string const& type, std::string const& value)
    {
        gate->BeginUpdate(true);
        values[type] = value;
        gate->EndUpdate();
    }

    std::map<std::string, std::string> values{{"One", ""}, {"Two", ""}};
    std::set<std::string> stopped; // the services that do not run
    nlohmann::json own = "";
    ZuHost::PersistRegistry* registry = nullptr;
    ZuHost::UpdateGate* gate = nullptr;
    std::function<void()> onLoad;
    std::function<void(std::string const&)> onRead;
    CallLog calls;

private:
    static std::string PathOf(std::string const& type)
    {
        return "/controls/" + type + "/config.json";
    }

    static void Write(ZuCommon::IPersistStore& store, std::string const& type, std::string const& text)
    {
        store.Write(PathOf(type), text.data(), text.size());
    }

    std::map<std::string, std::unique_ptr<FakeControlInstance>> instances;
};

/// A job manager with its collaborators, built as in the host. A test can start it again on the same folder.
class JobDesk final
{
public:
    explicit JobDesk(std::filesystem::path const& dataFolder)
        : startRetry(problems, {{},
                                {},
                                [this] { return failedStarts; },
                                [this] { registry.MarkModified(keepers, ZuCommon::PersistDomain::JOB, 0); }}),
          folder(dataFolder),
          jobs(registry, gate, startRetry, problems, folder, {1'000, 1'000, 50'000})
    {
        keepers.registry = &registry;
        keepers.gate = &gate;
        id = registry.Register(keepers, "");
    }

    ~JobDesk()
    {
        ZU_GUARD_DESTRUCTOR([this] { jobs.Close(); });
        registry.Deregister(id);
    }

    JobDesk(JobDesk const&) = delete;
    JobDesk& operator=(JobDesk const&) = delete;

    ZuCommon::ProblemsManager problems;
    ZuHost::PersistRegistry registry;
    ZuHost::UpdateGate gate;
    ValueKeepers keepers;
    std::vector<ZuControl::ControlVitals::FailedStarts> failedStarts;
    ZuHost::StartRetry startRetry; // makes no attempts: it has no thread and no functions here
    ZuHost::DataFolder folder;
    ZuHost::JobManager jobs;

private:
    uint64 id = 0;
};

} // namespace ZuTest
