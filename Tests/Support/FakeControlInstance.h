#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlInstanceMetrics.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// An instance with members that the test sets. It records each requested change, then runs `on[call]` if the test has
/// set it, so that a test can let the call throw.
class FakeControlInstance final : public ZuControl::IControlInstance
{
public:
    FakeControlInstance(CallLog& sharedCalls, std::string const& typeName) : calls(sharedCalls)
    {
        info.SetTypeName(typeName.c_str()).SetDisplayName((typeName + " shown").c_str());
    }

    ZuControl::ControlInfo const& Info() const override
    {
        return info;
    }

    char const* TypeName() const override
    {
        return info.TypeName();
    }

    ZuControl::ZuEthernetProtocol EthernetProtocolId() const override
    {
        return {};
    }

    void Enable(bool value) override
    {
        Note(value ? "Enable(true)" : "Enable(false)");
        enabled = value;
    }

    bool IsEnabled() const override
    {
        return enabled;
    }

    Zu::Event<std::string, bool>::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(std::string, bool)> handler) override
    {
        return paramsEvent.Add(std::move(handler));
    }

    void RemoveParamsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) override
    {
        Note("RemoveParamsHandler");
        paramsEvent.Remove(id);
    }

    Zu::Event<std::string, bool>::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(std::string, bool)> handler) override
    {
        return outputsEvent.Add(std::move(handler));
    }

    void RemoveOutputsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id) override
    {
        Note("RemoveOutputsHandler");
        outputsEvent.Remove(id);
    }

    Zu::Event<std::string, std::string>::CallbackId
    AddRegisterAssemblyUpdatedEventHandler(std::function<void(std::string, std::string)> handler) override
    {
        return assemblyEvent.Add(std::move(handler));
    }

    void RemoveRegisterAssemblyUpdatedEventHandler(Zu::Event<std::string, std::string>::CallbackId id) override
    {
        Note("RemoveAssemblyHandler");
        assemblyEvent.Remove(id);
    }

    Zu::Params::Group& BeginUpdateParameters() override
    {
        Note("BeginUpdateParameters");
        return *params;
    }

    void EndUpdateParameters() override
    {
        Note("EndUpdateParameters");
        paramsEvent.Fire(TypeName(), true);
    }

    void BeginUpdateOutputsMap() override
    {
        Note("BeginUpdateOutputsMap");
    }

    void EndUpdateOutputsMap() override
    {
        Note("EndUpdateOutputsMap");
        outputsEvent.Fire(TypeName(), true);
    }

    void BeginUpdateRegisterAssembly() override
    {
        Note("BeginUpdateRegisterAssembly");
    }

    void EndUpdateRegisterAssembly(std::string const& id) override
    {
        Note("EndUpdateRegisterAssembly(" + id + ")");
        assemblyEvent.Fire(TypeName(), id);
    }

    ZuCommon::IMetricsKeeper& MetricsKeeper() override
    {
        return metrics;
    }

    ZuCommon::IMetricsSource& MetricsSource() override
    {
        return metrics;
    }

    Zu::Params::Group const& Params() const override
    {
        return *params;
    }

    char const* ParamsVersion() const override
    {
        return "1";
    }

    void ParamsUpdate() override
    {
        Note("ParamsUpdate");
    }

    bool HasProtocolOutput() const override
    {
        return outputs != nullptr;
    }

    void OutputsMapBeginLock() override
    {
        Note("OutputsMapBeginLock");
    }

    void OutputsMapEndLock() override
    {
        Note("OutputsMapEndLock");
    }

    Zu::Params::Group const& OutputsMap() const override
    {
        if (auto const found = on.find("OutputsMap"); found != on.end())
        {
            found->second();
        }
        if (outputs == nullptr)
        {
            ZU_THROW(Zu::Status::NOT_FOUND);
        }
        return *outputs;
    }

    bool HasOutputsActionTarget() const override
    {
        return outputsTarget != nullptr;
    }

    ZuControl::IControlActionTarget& OutputsActionTarget() const override
    {
        return *outputsTarget;
    }

    void OutputsUpdate() override
    {
        Note("OutputsUpdate");
    }

    bool HasRegisterAssemblyActionTarget() const override
    {
        return assemblyTarget != nullptr;
    }

    ZuControl::IControlActionTarget& RegisterAssemblyActionTarget(char const* /*id*/) const override
    {
        return *assemblyTarget;
    }

    bool HasRegisterAssemblyGroup() const override
    {
        return !assemblies.empty();
    }

    bool HasRegisterAssembly(char const* id) const override
    {
        return assemblies.count(id) != 0;
    }

    ZuControl::ControlProtocol::IProtocolRegisterAssembly& RegisterAssembly(char const* id) const override
    {
        auto const position = assemblies.find(id);
        if (position == assemblies.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND);
        }
        return *position->second;
    }

    std::vector<std::string> RegisterAssemblyList() const override
    {
        std::vector<std::string> ids;
        for (auto const& [id, assembly] : assemblies)
        {
            ids.push_back(id);
        }
        return ids;
    }

    void RegisterAssemblyBeginLock(char const* /*id*/) override
    {
    }

    void RegisterAssemblyEndLock(char const* /*id*/) override
    {
    }

    void RegisterAssemblyUpdate(char const* id) override
    {
        Note(std::string("RegisterAssemblyUpdate(") + id + ")");
    }

    void ResetInstance(bool /*keepEnabled*/, DataToReset /*data*/) override
    {
    }

    ZuControl::IControlActionTarget* ActionTarget() override
    {
        return target;
    }

    void OnStartScan() override
    {
    }

    void OnStopScan() override
    {
    }

    void OnFactoryRestore() override
    {
    }

    ZuControl::ProtocolStatus GetProtocolStatus() override
    {
        return status;
    }

    void InitPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& /*document*/) override
    {
    }

    void LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json const& /*document*/) override
    {
    }

    void SavePersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& /*document*/) override
    {
    }

    CallLog& calls;
    std::map<std::string, std::function<void()>> on;
    ZuControl::ControlInfo info;
    bool enabled = false;
    ZuControl::ProtocolStatus status = ZuControl::ProtocolStatus::Stopped;
    std::shared_ptr<Zu::Params::Group> params = std::make_shared<Zu::Params::Group>("");
    ZuControl::IControlActionTarget* target = nullptr;
    Zu::Params::Group* outputs = nullptr;
    ZuControl::IControlActionTarget* outputsTarget = nullptr;
    std::map<std::string, ZuControl::ControlProtocol::IProtocolRegisterAssembly*> assemblies;
    ZuControl::IControlActionTarget* assemblyTarget = nullptr;
    Zu::Event<std::string, bool> paramsEvent;
    Zu::Event<std::string, bool> outputsEvent;
    Zu::Event<std::string, std::string> assemblyEvent;
    ZuControl::ControlInstanceMetrics metrics;

private:
    void Note(std::string const& call)
    {
        calls.Add(call);
        if (auto const position = on.find(call); position != on.end())
        {
            position->second();
        }
    }
};

} // namespace ZuTest
