#include "ConfiguredInstance.h"

#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/ControlInstance.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace ZuBench
{

using namespace ZuControl::ControlProtocol;
using Json = nlohmann::json;

namespace
{

constexpr uint16 MOST_ENTRIES = 65534;
constexpr char const* BLOCK_TYPE = "Measurement";
constexpr char const* BLOCK_NAME = "Measurement value and decision";
constexpr uint16 BLOCK_REGISTERS = 3;

std::unique_ptr<IProtocolOutput> MakeMap(EntryKind kind)
{
    switch (kind)
    {
    case EntryKind::REGISTER_MAP:
        return std::make_unique<RegisterProtocolOutputMap>(uint16{0}, uint16{65535}, uint16{2}, MOST_ENTRIES);
    case EntryKind::STANDARD_MAP:
        return std::make_unique<StandardProtocolOutputMap>(MOST_ENTRIES, uint16{0}, uint16{65534});
    case EntryKind::TEXT_ID_MAP:
        return std::make_unique<TextIdStandardProtocolOutputMap>(MOST_ENTRIES);
    case EntryKind::BLOCKS:
        break;
    }
    return nullptr;
}

std::unique_ptr<ProtocolRegisterBlockInfo> MakeBlockType()
{
    RegisterBlockInfoParams params;
    params.type = BLOCK_TYPE;
    params.displayName = BLOCK_NAME;
    params.registerCount = BLOCK_REGISTERS;
    params.bytesPerRegister = 2;
    params.maxInstanceCount = MOST_ENTRIES;
    params.hasDataSource = true;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<ProtocolScanOutputRegisterBlock>>();
    return std::make_unique<ProtocolRegisterBlockInfo>(params);
}

} // namespace

PlainEntries::PlainEntries(EntryKind newKind, unsigned count) : kind(newKind)
{
    for (unsigned i = 0; i < count; ++i)
    {
        char number[16];
        std::snprintf(number, sizeof number, "%05u", i);
        entries.push_back({static_cast<uint16>(i * BLOCK_REGISTERS), 4, 0, 4, std::string("output-") + number,
                           std::string("tools/tool-") + number + "/outputs/height"});
    }
}

Json PlainEntries::Document() const
{
    Json document;
    document["version"] = "1";
    Json& control = document["zu:control"];
    control["enabled"] = false;
    control["parameters"] = Json::object();
    control["parametersVersion"] = "1";
    if (kind == EntryKind::BLOCKS)
    {
        control["registerAssemblyList"] = Json::array();
        control["registerAssemblyList"].push_back(Assembly());
    }
    else
    {
        control["outputs"] = Outputs();
    }
    return document;
}

Json PlainEntries::Outputs() const
{
    Json outputs;
    outputs["acceptedDataFormats"] = Json::array();
    Json& map = outputs["map"] = Json::array();
    for (Entry const& entry : entries)
    {
        Json item;
        if (kind == EntryKind::TEXT_ID_MAP)
        {
            item["outputId"] = entry.textId;
        }
        else
        {
            item["outputId"] = entry.id;
        }
        item["source"] = entry.source;
        if (kind == EntryKind::REGISTER_MAP)
        {
            item["outputSize"] = entry.size;
            item["dataOffset"] = entry.offset;
            item["dataLength"] = entry.length;
        }
        map.push_back(std::move(item));
    }
    if (kind == EntryKind::REGISTER_MAP)
    {
        outputs["attributes"] = {{"start", 0}, {"count", 65535}, {"itemSize", 2}};
    }
    else if (kind == EntryKind::STANDARD_MAP)
    {
        outputs["attributes"] = {{"outputIdMin", 0}, {"outputIdMax", 65534}};
    }
    return outputs;
}

Json PlainEntries::Assembly() const
{
    Json assembly;
    assembly["attributes"] = {{"isGlobalAddressSpaceUsed", true}, {"outputIdMin", 0}, {"outputIdMax", 65534}};
    assembly["properties"] = {{"id", IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_ID},
                              {"displayName", IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME}};
    Json& blocks = assembly["blocks"] = Json::array();
    for (Entry const& entry : entries)
    {
        Json block;
        block["type"] = BLOCK_TYPE;
        block["displayName"] = BLOCK_NAME;
        block["scannerId"] = "";
        block["outputId"] = entry.id;
        block["dataSource"] = entry.source;
        blocks.push_back(std::move(block));
    }
    return assembly;
}

std::string MemoryStore::Read(std::string const& /*path*/) const
{
    return bytes;
}

void MemoryStore::Write(std::string const& /*path*/, void const* data, std::size_t size)
{
    bytes.assign(static_cast<char const*>(data), size);
}

bool MemoryStore::Exists(std::string const& /*path*/) const
{
    return true;
}

class ConfiguredProtocol final : public ProtocolBase
{
public:
    ConfiguredProtocol(ControlProtocolEnviron const& environ, EntryKind kind)
        : ProtocolBase(ZuControl::ZuEthernetProtocol{100}, "Benchmark", environ), map(MakeMap(kind))
    {
        ProtocolInitParams init;
        init.params = &params;
        init.metricsData = &metrics;
        if (map != nullptr)
        {
            mapTarget = std::make_unique<ProtocolOutputActionTarget>(*map);
            init.outputs = map.get();
            init.outputsActionTarget = mapTarget.get();
        }
        else
        {
            assembly.AddSupportedBlockType(MakeBlockType());
            group.Add(assembly, assemblyTarget);
            init.registerAssemblyGroup = &group;
        }
        Init(init);
    }

    void Start() override
    {
    }

    void Stop() override
    {
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    void OutputsUpdate() override
    {
    }

    void RegisterAssemblyUpdate(char const* /*id*/) override
    {
    }

    void ConfigureDefaultRegisterAssembly() override
    {
        assembly.InitDefaultRegisterBlocksForRegisterAssembly();
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

    std::unique_ptr<IProtocolOutput> const map;
    ProtocolRegisterAssemblyBase assembly{true};

private:
    Zu::Params::Group params;
    Zu::Properties::Structure metrics{true};
    std::unique_ptr<ProtocolOutputActionTarget> mapTarget;
    ProtocolRegisterAssemblyActionTarget assemblyTarget{assembly};
    ProtocolRegisterAssemblyGroup group;
};

ConfiguredInstance::ConfiguredInstance(EntryKind kind)
{
    ControlProtocolEnviron environ;
    environ.operations = &operations;
    environ.deployment = &host;
    environ.problems = &problems;
    info.SetTypeName("Benchmark");
    protocol = std::make_shared<ConfiguredProtocol>(environ, kind);
    ZuControl::ControlInstanceParams params{&info, &host, &scanResults, &problems, protocol};
    instance = std::make_unique<ZuControl::ControlInstance>(params);
}

ConfiguredInstance::~ConfiguredInstance() = default;

ZuControl::IControlInstance& ConfiguredInstance::Instance()
{
    return *instance;
}

std::size_t ConfiguredInstance::Count()
{
    if (protocol->map != nullptr)
    {
        return protocol->map->Count();
    }
    protocol->assembly.BeginLock();
    std::size_t const count = protocol->assembly.AddedRegisterBlocks().size();
    protocol->assembly.EndLock();
    return count;
}

void ConfiguredInstance::Clear()
{
    instance->ResetInstance(true, ZuControl::IControlInstance::DataToResetAll);
}

void ConfiguredInstance::Host::BeginUpdate(bool /*exclusive*/)
{
}

void ConfiguredInstance::Host::EndUpdate()
{
}

bool ConfiguredInstance::Host::IsPhysicalSensor()
{
    return true;
}

bool ConfiguredInstance::Host::IsPhysicalBrackle()
{
    return false;
}

bool ConfiguredInstance::Host::IsVirtualSensor()
{
    return false;
}

bool ConfiguredInstance::Host::IsVirtualBrackle()
{
    return false;
}

bool ConfiguredInstance::Host::IsTavrinServiceApp()
{
    return false;
}

} // namespace ZuBench
