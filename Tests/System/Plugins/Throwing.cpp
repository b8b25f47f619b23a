// A protocol that throws an int from one of its operations. The environment variable ZU_TEST_THROWING_FILE is the path
// of a file with the name of that operation. Each call reads the file, so that a test can choose another operation
// while the host runs.

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuPlugin/PluginEntry.h"

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

namespace
{

using namespace ZuControl;
using namespace ZuControl::ControlProtocol;

constexpr ZuEthernetProtocol PROTOCOL_ID{112};
constexpr char const* TYPE_NAME = "Ahead"; // sorts before all other protocols, which its failures must not affect

void ThrowIn(std::string const& operation)
{
    char const* const path = std::getenv("ZU_TEST_THROWING_FILE");
    std::string chosen;
    if (path != nullptr && std::getline(std::ifstream(path), chosen) && chosen == operation)
    {
        throw 42;
    }
}

class ThrowingMap final : public TextIdStandardProtocolOutputMap
{
public:
    ThrowingMap() : TextIdStandardProtocolOutputMap(16)
    {
    }

    void BeginLock() override
    {
        ThrowIn("IProtocolOutput::BeginLock");
        TextIdStandardProtocolOutputMap::BeginLock();
    }

    Zu::Params::Group const& OutputMap() const override
    {
        ThrowIn("IProtocolOutput::OutputMap");
        return TextIdStandardProtocolOutputMap::OutputMap();
    }

    void Clear() override
    {
        ThrowIn("IProtocolOutput::Clear");
        TextIdStandardProtocolOutputMap::Clear();
    }
};

class ThrowingAssembly final : public ProtocolRegisterAssemblyBase
{
public:
    ThrowingAssembly() : ProtocolRegisterAssemblyBase(true, 0, 99)
    {
    }

    void BeginLock() override
    {
        ThrowIn("IProtocolRegisterAssembly::BeginLock");
        ProtocolRegisterAssemblyBase::BeginLock();
    }

    Zu::Params::Group const& Attributes() override
    {
        ThrowIn("IProtocolRegisterAssembly::Attributes");
        return ProtocolRegisterAssemblyBase::Attributes();
    }
};

/// The protocol's own actions: "act" does nothing, "restore" begins a factory restore.
class ThrowingActions final : public IControlActionTarget
{
public:
    explicit ThrowingActions(ControlProtocolOperations& usedOperations) : operations(usedOperations)
    {
    }

    std::vector<ControlActionInfo> ListActions() const override
    {
        ThrowIn("IControlActionTarget::ListActions");
        return {{"act", "Act"}, {"restore", "Restore"}};
    }

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& /*id*/) const override
    {
        ThrowIn("IControlActionTarget::GetActionParams");
        return std::make_shared<Zu::Params::Group>("");
    }

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& /*args*/) override
    {
        ThrowIn("IControlActionTarget::InvokeAction");
        if (id == "restore")
        {
            operations.FactoryRestore(PROTOCOL_ID);
        }
        return nullptr;
    }

private:
    ControlProtocolOperations& operations;
};

struct ThrowingParams final : Zu::Params::Group
{
    ThrowingParams() : Group("")
    {
        Register("level", "Level", level);
    }

    Zu::Params::Value<uint32> level;
};

class ThrowingProtocol final : public ProtocolBase
{
public:
    explicit ThrowingProtocol(ControlProtocolEnviron const& environ)
        : ProtocolBase(PROTOCOL_ID, TYPE_NAME, environ),
          mapActions(map),
          assemblyActions(assembly),
          actions(*environ.operations)
    {
        ThrowIn("constructor");
        metrics.Register("controlDrops", controlDrops);
        group.Add(assembly, assemblyActions);
        ProtocolInitParams init;
        init.params = &params;
        init.outputs = &map;
        init.outputsActionTarget = &mapActions;
        init.registerAssemblyGroup = &group;
        init.metricsData = &metrics;
        Init(init);
    }

    ~ThrowingProtocol() override
    {
        CloseResultHandlerGate();
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        ThrowIn("UpdateMetrics");
        return metrics;
    }

    void ResetMetrics() override
    {
    }

    Zu::Properties::Structure const& GetMetrics() const override
    {
        ThrowIn("GetMetrics");
        return metrics;
    }

    ZuEthernetProtocol EthernetProtocolId() override
    {
        ThrowIn("EthernetProtocolId");
        return ProtocolBase::EthernetProtocolId();
    }

    void ParamsUpdate() override
    {
        ThrowIn("ParamsUpdate");
    }

    void ResetParams() override
    {
        ThrowIn("ResetParams");
        params.level.Set(0);
    }

    void Start() override
    {
        ThrowIn("Start");
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
    }

    void Stop() override
    {
        ThrowIn("Stop");
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
    }

    Zu::Params::Group& Params() const override
    {
        ThrowIn("Params");
        return ProtocolBase::Params();
    }

    char const* ParamsVersion() const override
    {
        ThrowIn("ParamsVersion");
        return ProtocolBase::ParamsVersion();
    }

    Zu::Event<bool>::CallbackId AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) override
    {
        ThrowIn("AddParamsInternalUpdateEventHandler");
        return ProtocolBase::AddParamsInternalUpdateEventHandler(std::move(handler));
    }

    void RemoveParamsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id) override
    {
        ThrowIn("RemoveParamsInternalUpdateEventHandler");
        ProtocolBase::RemoveParamsInternalUpdateEventHandler(id);
    }

    void RemoveProtocolStatusUpdateEventHandler(Zu::Event<ProtocolStatus>::CallbackId& id) override
    {
        ThrowIn("RemoveProtocolStatusUpdateEventHandler");
        ProtocolBase::RemoveProtocolStatusUpdateEventHandler(id);
    }

    void OutputsUpdate() override
    {
        ThrowIn("OutputsUpdate");
    }

    bool HasProtocolOutput() const override
    {
        ThrowIn("HasProtocolOutput");
        return ProtocolBase::HasProtocolOutput();
    }

    IProtocolOutput& Outputs() const override
    {
        ThrowIn("Outputs");
        return ProtocolBase::Outputs();
    }

    bool HasOutputsActionTarget() const override
    {
        ThrowIn("HasOutputsActionTarget");
        return ProtocolBase::HasOutputsActionTarget();
    }

    IControlActionTarget& OutputsActionTarget() const override
    {
        ThrowIn("OutputsActionTarget");
        return ProtocolBase::OutputsActionTarget();
    }

    void ProcessResultSets(void* /*resultSets*/) override
    {
        ThrowIn("ProcessResultSets");
    }

    void RegisterControlScanResultsHandler(IControlScanResults& results) override
    {
        ThrowIn("RegisterControlScanResultsHandler");
        ProtocolBase::RegisterControlScanResultsHandler(results);
        results.UpdateOutputMap(PROTOCOL_ID, {"profile/zMax"});
        UpdateConnectedClientCount(1);
    }

    void DeregisterControlScanResultsHandler(IControlScanResults& results) override
    {
        ThrowIn("DeregisterControlScanResultsHandler");
        ProtocolBase::DeregisterControlScanResultsHandler(results);
    }

    IControlActionTarget* ActionTarget() override
    {
        ThrowIn("ActionTarget");
        return &actions;
    }

    void RegisterAssemblyUpdate(char const* /*id*/) override
    {
        ThrowIn("RegisterAssemblyUpdate");
    }

    bool HasRegisterAssemblyActionTarget() const override
    {
        ThrowIn("HasRegisterAssemblyActionTarget");
        return ProtocolBase::HasRegisterAssemblyActionTarget();
    }

    IControlActionTarget& RegisterAssemblyActionTarget(char const* id) const override
    {
        ThrowIn("RegisterAssemblyActionTarget");
        return ProtocolBase::RegisterAssemblyActionTarget(id);
    }

    bool HasRegisterAssemblyGroup() const override
    {
        ThrowIn("HasRegisterAssemblyGroup");
        return ProtocolBase::HasRegisterAssemblyGroup();
    }

    bool HasRegisterAssembly(char const* id) const override
    {
        ThrowIn("HasRegisterAssembly");
        return ProtocolBase::HasRegisterAssembly(id);
    }

    IProtocolRegisterAssembly& RegisterAssembly(char const* id) const override
    {
        ThrowIn("RegisterAssembly");
        return ProtocolBase::RegisterAssembly(id);
    }

    std::vector<std::string> RegisterAssemblyList() const override
    {
        ThrowIn("RegisterAssemblyList");
        return ProtocolBase::RegisterAssemblyList();
    }

    void ConfigureDefaultRegisterAssembly() override
    {
        ThrowIn("ConfigureDefaultRegisterAssembly");
    }

    std::vector<std::string> DataSourceList() const override
    {
        ThrowIn("DataSourceList");
        return {"profile/zMax"};
    }

    void OnStartScan() override
    {
        ThrowIn("OnStartScan");
    }

    void OnStopScan() override
    {
        ThrowIn("OnStopScan");
    }

    void OnFactoryRestore() override
    {
        ThrowIn("OnFactoryRestore");
    }

    void InitPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& /*document*/) override
    {
        ThrowIn("InitPersistDomain");
    }

    void LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json const& /*document*/) override
    {
        ThrowIn("LoadPersistDomain");
    }

    void SavePersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& document) override
    {
        ThrowIn("SavePersistDomain");
        document["kept"] = true;
    }

private:
    ThrowingParams params;
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
    ThrowingMap map;
    ProtocolOutputActionTarget mapActions;
    ThrowingAssembly assembly;
    ProtocolRegisterAssemblyActionTarget assemblyActions;
    ProtocolRegisterAssemblyGroup group;
    ThrowingActions actions;
};

struct ThrowingFactory final : IControlFactory
{
    std::shared_ptr<IProtocol> Create(ControlProtocolEnviron const& environ) override
    {
        ThrowIn("Create");
        return std::make_shared<ThrowingProtocol>(environ);
    }
};

class ThrowingPlugin final : public ControlPlugin
{
public:
    ThrowingPlugin()
    {
        auto const factory = std::make_shared<ThrowingFactory>();
        infos.push_back(ControlInfo().SetTypeName(TYPE_NAME).SetDisplayName(TYPE_NAME).SetFactory(*factory));
        factories.push_back(factory);
    }
};

std::shared_ptr<ControlPlugin> Make()
{
    ThrowIn("Make");
    return std::make_shared<ThrowingPlugin>();
}

} // namespace

ZU_PLUGIN_ENTRY(Make);
