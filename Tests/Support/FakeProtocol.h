#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace ZuTest
{

/// An action target that offers nothing.
class FakeActionTarget final : public ZuControl::IControlActionTarget
{
public:
    std::vector<ZuControl::ControlActionInfo> ListActions() const override
    {
        return {};
    }

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& /*id*/) const override
    {
        return nullptr;
    }

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& /*id*/,
                                                    Zu::Params::Group const& /*args*/) override
    {
        return nullptr;
    }
};

/// An output map that only records calls of its lock and of `Clear`.
class FakeProtocolOutput final : public ZuControl::ControlProtocol::IProtocolOutput
{
public:
    explicit FakeProtocolOutput(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    void BeginLock() override
    {
        calls.Add("Outputs.BeginLock");
    }

    void EndLock() override
    {
        calls.Add("Outputs.EndLock");
    }

    Zu::Params::Group const& OutputMap() const override
    {
        return map;
    }

    std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const override
    {
        return nullptr;
    }

    std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const override
    {
        return nullptr;
    }

    void Add(Zu::Params::Group const& /*itemArgs*/) override
    {
    }

    void AddAll(Zu::Params::Group& /*outputsArgs*/) override
    {
    }

    void Remove(Zu::Params::Group const& /*args*/) override
    {
    }

    uint64 Count() const override
    {
        return 0;
    }

    Zu::Params::Group const& At(uint64 /*index*/) const override
    {
        return map;
    }

    void Clear() override
    {
        calls.Add("Outputs.Clear");
    }

    std::vector<std::string> DataSourceList() const override
    {
        return {};
    }

    void CompactId() override
    {
    }

    void UpdateId(Zu::Params::Group& /*outputsArgs*/) override
    {
    }

    Zu::Params::Group map;

private:
    CallLog& calls;
};

/// An assembly without blocks that only records calls of its lock.
class FakeRegisterAssembly final : public ZuControl::ControlProtocol::IProtocolRegisterAssembly
{
public:
    using Block = ZuControl::ControlProtocol::ProtocolRegisterBlock;
    using BlockInfo = ZuControl::ControlProtocol::ProtocolRegisterBlockInfo;

    explicit FakeRegisterAssembly(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    void BeginLock() override
    {
        calls.Add("RegisterAssembly.BeginLock");
    }

    void EndLock() override
    {
        calls.Add("RegisterAssembly.EndLock");
    }

    void AddSupportedBlockType(std::unique_ptr<BlockInfo> /*info*/) override
    {
    }

    void Add(Zu::Params::Group& /*params*/) override
    {
    }

    void Remove(Zu::Params::Group const& /*params*/) override
    {
    }

    void Compact(Zu::Params::Group const& /*params*/) override
    {
    }

    void Update(Zu::Params::Group const& /*params*/) override
    {
    }

    void ResetRegisterAssembly() override
    {
    }

    void InitDefaultRegisterBlocksForRegisterAssembly() override
    {
    }

    std::vector<std::unique_ptr<BlockInfo>> const& SupportedRegisterBlockTypes() override
    {
        return types;
    }

    std::list<std::shared_ptr<Block>> const& AddedRegisterBlocks() override
    {
        return blocks;
    }

    std::list<std::shared_ptr<Block>> const FindAddedBlocksOfTypes(std::list<std::string> /*types*/) override
    {
        return {};
    }

    std::map<std::string, std::shared_ptr<Block>> const FindAddedScanOutputBlocksSortedByDataSource() override
    {
        return {};
    }

    Zu::Params::Group const& Attributes() override
    {
        return group;
    }

    Zu::Params::Group const& Properties() override
    {
        return group;
    }

    std::vector<std::string> DataSourceList() const override
    {
        return {};
    }

    char const* Id() const override
    {
        return "a";
    }

private:
    CallLog& calls;
    std::vector<std::unique_ptr<BlockInfo>> types;
    std::list<std::shared_ptr<Block>> blocks;
    Zu::Params::Group group;
};

/// A protocol that records its calls and fails on demand.
///
/// A call "X" is recorded as prefix + "X". Then `on["X"]` runs if the test has set it; it may throw or report.
class FakeProtocol final : public ZuControl::ControlProtocol::IProtocol
{
public:
    FakeProtocol(CallLog& sharedCalls, int32 protocolNumber, std::string callPrefix = "")
        : calls(sharedCalls),
          number(protocolNumber),
          prefix(std::move(callPrefix)),
          output(sharedCalls),
          assembly(sharedCalls)
    {
    }

    ~FakeProtocol() override
    {
        calls.Add(prefix + "~");
    }

    void Note(std::string const& name) const
    {
        calls.Add(prefix + name);
        if (auto const position = on.find(name); position != on.end())
        {
            position->second();
        }
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        Note("UpdateMetrics");
        return metrics;
    }

    void ResetMetrics() override
    {
        Note("ResetMetrics");
    }

    Zu::Properties::Structure const& GetMetrics() const override
    {
        Note("GetMetrics");
        return metrics;
    }

    char const* DisplayName() const override
    {
        return "Fake";
    }

    /// Not recorded, because the module calls it at any time.
    ZuControl::ZuEthernetProtocol EthernetProtocolId() override
    {
        if (auto const position = on.find("EthernetProtocolId"); position != on.end())
        {
            position->second();
        }
        return ZuControl::ZuEthernetProtocol{number};
    }

    void ParamsUpdate() override
    {
        Note("ParamsUpdate");
    }

    void ResetParams() override
    {
        Note("ResetParams");
    }

    void Start() override
    {
        Note("Start");
    }

    void Stop() override
    {
        Note("Stop");
    }

    void BeginUpdateParams(char const* /*key*/) override
    {
        Note("BeginUpdateParams");
    }

    void EndUpdateParams() override
    {
        Note("EndUpdateParams");
    }

    Zu::Params::Group& Params() const override
    {
        Note("Params");
        return params;
    }

    char const* ParamsVersion() const override
    {
        return "7";
    }

    Zu::Event<bool>::CallbackId AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) override
    {
        Note("AddParamsHandler");
        return paramsEvent.Add(std::move(handler));
    }

    void RemoveParamsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) override
    {
        Note("RemoveParamsHandler");
        paramsEvent.Remove(id);
    }

    void NotifyParamsInternalUpdateEventHandler(bool notify) override
    {
        paramsEvent.Fire(notify);
    }

    Zu::Event<ZuControl::ProtocolStatus>::CallbackId
    AddProtocolStatusUpdateEventHandler(std::function<void(ZuControl::ProtocolStatus)> handler) override
    {
        Note("AddStatusHandler");
        return statusEvent.Add(std::move(handler));
    }

    void RemoveProtocolStatusUpdateEventHandler(Zu::Event<ZuControl::ProtocolStatus>::CallbackId& id) override
    {
        Note("RemoveStatusHandler");
        statusEvent.Remove(id);
    }

    void NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus status) override
    {
        statusEvent.Fire(status);
    }

    Zu::Event<bool>::CallbackId AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) override
    {
        Note("AddOutputsHandler");
        return outputsEvent.Add(std::move(handler));
    }

    void RemoveOutputsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) override
    {
        Note("RemoveOutputsHandler");
        outputsEvent.Remove(id);
    }

    void NotifyOutputsInternalUpdateEventHandler(bool notify) override
    {
        outputsEvent.Fire(notify);
    }

    void OutputsUpdate() override
    {
        Note("OutputsUpdate");
    }

    bool HasProtocolOutput() const override
    {
        return hasOutput;
    }

    ZuControl::ControlProtocol::IProtocolOutput& Outputs() const override
    {
        return output;
    }

    bool HasOutputsActionTarget() const override
    {
        return hasOutput;
    }

    ZuControl::IControlActionTarget& OutputsActionTarget() const override
    {
        return target;
    }

    void ProcessResultSets(void* /*resultSets*/) override
    {
        Note("ProcessResultSets");
    }

    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override
    {
        Note("Register");
        id = results.AddResultHandler([this](void* sets) { ProcessResultSets(sets); }, EthernetProtocolId());
    }

    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override
    {
        Note("Deregister");
        results.RemoveResultHandler(id);
    }

    ZuControl::IControlActionTarget* ActionTarget() override
    {
        return &target;
    }

    void RegisterAssemblyUpdate(char const* assemblyId) override
    {
        Note(std::string("RegisterAssemblyUpdate(") + assemblyId + ")");
    }

    bool HasRegisterAssemblyActionTarget() const override
    {
        return hasGroup;
    }

    ZuControl::IControlActionTarget& RegisterAssemblyActionTarget(char const* /*assemblyId*/) const override
    {
        return target;
    }

    bool HasRegisterAssemblyGroup() const override
    {
        return hasGroup;
    }

    bool HasRegisterAssembly(char const* /*assemblyId*/) const override
    {
        return hasGroup;
    }

    ZuControl::ControlProtocol::IProtocolRegisterAssembly& RegisterAssembly(char const* assemblyId) const override
    {
        Note(std::string("RegisterAssembly(") + assemblyId + ")");
        return assembly;
    }

    std::vector<std::string> RegisterAssemblyList() const override
    {
        return {"a"};
    }

    void ConfigureDefaultRegisterAssembly() override
    {
        Note("ConfigureDefaultRegisterAssembly");
    }

    std::vector<std::string> DataSourceList() const override
    {
        return {"x", "y"};
    }

    void OnStartScan() override
    {
        Note("OnStartScan");
    }

    void OnStopScan() override
    {
        Note("OnStopScan");
    }

    void OnFactoryRestore() override
    {
        Note("OnFactoryRestore");
    }

    void UpdateConnectedClientCount(uint64 /*count*/) override
    {
    }

    ZuControl::ControlProtocol::ControlRegisterCommandStatus CompletedOperationStatus() const override
    {
        return {};
    }

    ZuControl::IControlHardwareManager& HardwareManager() override
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }

    void InitPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& document) override
    {
        Note("InitPersistDomain");
        document = persisted;
    }

    void LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json const& document) override
    {
        Note("LoadPersistDomain");
        persisted = document;
    }

    void SavePersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& document) override
    {
        Note("SavePersistDomain");
        document = persisted;
    }

    CallLog& calls;
    int32 const number;
    std::string const prefix;
    std::map<std::string, std::function<void()>> on;
    bool hasOutput = false;
    bool hasGroup = false;
    nlohmann::json persisted;
    mutable FakeProtocolOutput output;
    mutable FakeRegisterAssembly assembly;
    mutable FakeActionTarget target;
    mutable Zu::Params::Group params;
    Zu::Properties::Structure metrics{true};

private:
    Zu::Event<bool> paramsEvent;
    Zu::Event<ZuControl::ProtocolStatus> statusEvent;
    Zu::Event<bool> outputsEvent;
    std::pair<ZuControl::ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id;
};

} // namespace ZuTest
