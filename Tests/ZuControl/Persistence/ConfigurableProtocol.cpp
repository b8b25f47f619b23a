#include "ZuControl/Persistence/ConfigurableProtocol.h"

#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <utility>

namespace ZuControl
{

using namespace ControlProtocol;

namespace
{

constexpr uint16 MOST_ITEMS = 65534;

/// A map that records calls of its lock and of `Clear`.
template <typename Map>
class WatchedMap final : public Map
{
public:
    template <typename... Arguments>
    explicit WatchedMap(Hooks& sharedHooks, Arguments... arguments) : Map(arguments...), hooks(sharedHooks)
    {
    }

    void BeginLock() override
    {
        hooks.Note("Map.BeginLock");
        Map::BeginLock();
    }

    void EndLock() override
    {
        Map::EndLock();
        hooks.Note("Map.EndLock");
    }

    Zu::Params::Group const& OutputMap() const override
    {
        hooks.Note("Map.OutputMap");
        return Map::OutputMap();
    }

    void Clear() override
    {
        hooks.Note("Map.Clear");
        Map::Clear();
    }

private:
    Hooks& hooks;
};

/// An assembly that records calls of its lock and its reset.
class WatchedAssembly final : public ProtocolRegisterAssemblyBase
{
public:
    WatchedAssembly(Hooks& sharedHooks, bool isGlobal, uint16 lastId, std::string const& id)
        : ProtocolRegisterAssemblyBase(isGlobal, 0, lastId, id.c_str(), "Assembly " + id), hooks(sharedHooks)
    {
    }

    void BeginLock() override
    {
        Note("BeginLock");
        ProtocolRegisterAssemblyBase::BeginLock();
    }

    void EndLock() override
    {
        ProtocolRegisterAssemblyBase::EndLock();
        Note("EndLock");
    }

    void Add(Zu::Params::Group& added) override
    {
        Note("Add");
        ProtocolRegisterAssemblyBase::Add(added);
    }

    void ResetRegisterAssembly() override
    {
        Note("ResetRegisterAssembly");
        ProtocolRegisterAssemblyBase::ResetRegisterAssembly();
    }

    Zu::Params::Group const& Properties() override
    {
        Note("Properties");
        return ProtocolRegisterAssemblyBase::Properties();
    }

private:
    void Note(char const* call)
    {
        hooks.Note(std::string(Id()) + "." + call);
    }

    Hooks& hooks;
};

/// The actions of a map or an assembly, which have no argument records.
template <typename Target>
class TargetWithoutArguments final : public Target
{
public:
    using Target::Target;

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& /*id*/) const override
    {
        return nullptr;
    }
};

template <typename Target, typename Changed>
std::unique_ptr<Target> MakeTarget(Changed& changed, bool hasArguments)
{
    if (hasArguments)
    {
        return std::make_unique<Target>(changed);
    }
    return std::make_unique<TargetWithoutArguments<Target>>(changed);
}

void AddTypes(ProtocolRegisterAssemblyBase& assembly)
{
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(ZuTest::TypeParams<>("Plain", 2)));
    auto scan = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("Scan", 3);
    scan.hasDataSource = true;
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(scan));
    auto single = ZuTest::TypeParams<>("Single", 1);
    single.minInstanceCount = 1;
    single.maxInstanceCount = 1;
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(single));
}

} // namespace

ConfigurableParams::ConfigurableParams() : Group("")
{
    Register("port", "Port", port);
    Register("name", "Name", name);
    Register("secure", "Secure", secure);
    Register("mask", "Mask", mask);
    Register("limits", "Limits", limits);
    SetDefaults();
}

ConfigurableParams::~ConfigurableParams() = default;

void ConfigurableParams::SetDefaults()
{
    port.Set(1000);
    name.Set("default");
    secure.Set(false);
    mask.Set(0);
    limits.low.Set(-5);
    limits.high.Set(0.5);
}

ConfigurableParams::Limits::Limits() : Group("")
{
    Register("low", "Low", low);
    Register("high", "High", high);
}

ConfigurableParams::Limits::~Limits() = default;

ConfigurableProtocol::ConfigurableProtocol(ControlProtocolEnviron const& environ, Hooks& sharedHooks,
                                           ProtocolParts const& parts)
    : ProtocolBase(ZuEthernetProtocol{parts.number}, "Configurable", environ), hooks(sharedHooks)
{
    MakeMap(parts);
    MakeAssemblies(parts);
    ProtocolInitParams init;
    init.params = &params;
    init.metricsData = &metrics;
    init.outputs = map.get();
    init.outputsActionTarget = parts.hasOutputsTarget ? mapTarget.get() : nullptr;
    init.registerAssemblyGroup = parts.assemblies > 0 ? &assemblyGroup : nullptr;
    Init(init);
}

ConfigurableProtocol::~ConfigurableProtocol() = default;

Zu::Params::Group& ConfigurableProtocol::Params() const
{
    hooks.Note("Params");
    return ProtocolBase::Params();
}

Zu::Properties::Structure& ConfigurableProtocol::UpdateMetrics()
{
    return metrics;
}

void ConfigurableProtocol::ResetMetrics()
{
}

void ConfigurableProtocol::ParamsUpdate()
{
    hooks.Note("ParamsUpdate");
}

void ConfigurableProtocol::ResetParams()
{
    hooks.Note("ResetParams");
    params.SetDefaults();
}

void ConfigurableProtocol::Start()
{
    hooks.Note("Start");
}

void ConfigurableProtocol::Stop()
{
    hooks.Note("Stop");
}

void ConfigurableProtocol::OutputsUpdate()
{
    hooks.Note("OutputsUpdate");
}

void ConfigurableProtocol::RegisterAssemblyUpdate(char const* id)
{
    hooks.Note(std::string("RegisterAssemblyUpdate(") + id + ")");
}

void ConfigurableProtocol::ConfigureDefaultRegisterAssembly()
{
    hooks.Note("ConfigureDefaultRegisterAssembly");
    for (auto const& assembly : assemblies)
    {
        assembly->InitDefaultRegisterBlocksForRegisterAssembly();
    }
}

void ConfigurableProtocol::InitPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& document)
{
    hooks.Note("InitPersistDomain");
    document = ownDocument;
}

void ConfigurableProtocol::LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json const& document)
{
    hooks.Note("LoadPersistDomain");
    ownDocument = document;
}

void ConfigurableProtocol::SavePersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& document)
{
    hooks.Note("SavePersistDomain");
    document = ownDocument;
}

void ConfigurableProtocol::MakeMap(ProtocolParts const& parts)
{
    switch (parts.map)
    {
    case MapKind::NONE:
        return;
    case MapKind::REGISTER:
        map = std::make_unique<WatchedMap<RegisterProtocolOutputMap>>(hooks, uint16{100}, uint16{60000}, uint16{2},
                                                                      MOST_ITEMS);
        break;
    case MapKind::STANDARD:
        map = std::make_unique<WatchedMap<StandardProtocolOutputMap>>(hooks, MOST_ITEMS, uint16{0}, uint16{65534});
        break;
    case MapKind::TEXT_ID:
        map = std::make_unique<WatchedMap<TextIdStandardProtocolOutputMap>>(hooks, MOST_ITEMS);
        break;
    }
    mapTarget = MakeTarget<ProtocolOutputActionTarget>(*map, parts.hasActionArguments);
}

void ConfigurableProtocol::MakeAssemblies(ProtocolParts const& parts)
{
    for (unsigned i = 0; i < parts.assemblies; ++i)
    {
        bool const isGlobal = i % 2 == 0;
        uint16 const lastId = isGlobal ? 999 : ProtocolRegisterAssemblyBase::LAST_VALID_OUTPUT_ID;
        auto assembly = std::make_unique<WatchedAssembly>(hooks, isGlobal, lastId, "r" + std::to_string(i));
        AddTypes(*assembly);
        auto target = MakeTarget<ProtocolRegisterAssemblyActionTarget>(*assembly, parts.hasActionArguments);
        assemblyGroup.Add(*assembly, *target);
        assemblies.push_back(std::move(assembly));
        assemblyTargets.push_back(std::move(target));
    }
}

} // namespace ZuControl
