// A protocol whose blocks describe a field of every type, for the files that PLC programmers get. It serves no client: a
// test makes up the registers.

#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuPlugin/PluginEntry.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace ZuControl::ControlProtocol;

constexpr uint16 REGISTERS = 100; // of each block

/// Fields one behind the other, all in one order.
class Fields final
{
public:
    explicit Fields(BlockOrder usedOrder) : order(usedOrder)
    {
    }

    RegisterField& Add(std::string name, FieldType type, uint16 count)
    {
        RegisterField& field = fields.emplace_back();
        field.name = std::move(name);
        field.type = type;
        field.offset = next;
        field.count = count;
        field.order = order;
        next = static_cast<uint16>(next + count);
        return field;
    }

    std::vector<RegisterField> fields;

private:
    BlockOrder order;
    uint16 next = 0;
};

struct NumberOfType
{
    char const* name;
    FieldType type;
    uint16 count;
    uint64 mark;
};

constexpr NumberOfType NUMBERS[] = {
    {"usint", FieldType::USINT, 1, 0xFE},
    {"int", FieldType::INT, 1, 0x8000},
    {"uint", FieldType::UINT, 1, 0xFFFF},
    {"dint", FieldType::DINT, 2, 0x80000000},
    {"udint", FieldType::UDINT, 2, 0xFFFFFFFF},
    {"lint", FieldType::LINT, 4, 0x8000000000000000},
    {"ulint", FieldType::ULINT, 4, 0xFFFFFFFFFFFFFFFF},
};

void AddTexts(Fields& list)
{
    list.Add("text", FieldType::TEXT, 6);
    list.Add("pairs", FieldType::TEXT, 3).charactersPerRegister = 2;
    list.Add("raw", FieldType::RAW, 2);
}

void AddCommand(Fields& list)
{
    list.Add("requestId", FieldType::UINT, 1).role = FieldRole::COMMAND_REQUEST_ID;
    list.Add("commandId", FieldType::USINT, 1).role = FieldRole::COMMAND_ID;
    list.Add("commandText", FieldType::TEXT, 6).role = FieldRole::COMMAND_TEXT;
    list.Add("answerId", FieldType::UINT, 1).role = FieldRole::ANSWER_REQUEST_ID;
    list.Add("answerStatus", FieldType::UINT, 1).role = FieldRole::ANSWER_STATUS;
}

std::vector<RegisterField> AllFields(BlockOrder order)
{
    Fields list(order);
    list.Add("fingerprint", FieldType::UDINT, 2).role = FieldRole::FINGERPRINT;
    for (NumberOfType const& number : NUMBERS)
    {
        std::string const name = number.name;
        list.Add(name + "Plain", number.type, number.count);
        list.Add(name + "Marked", number.type, number.count).invalid = number.mark;
        list.Add(name + "Scaled", number.type, number.count).divisor = 10;
        RegisterField& both = list.Add(name + "Both", number.type, number.count);
        both.invalid = number.mark;
        both.divisor = 1000;
    }
    list.Add("real", FieldType::REAL, 2);
    list.Add("lreal", FieldType::LREAL, 4);
    for (uint8 const bit : {uint8{0}, uint8{7}, uint8{8}, uint8{15}})
    {
        RegisterField& field = list.Add("bit" + std::to_string(bit), FieldType::BIT, 1);
        field.bit = bit;
    }
    AddTexts(list);
    AddCommand(list);
    return std::move(list.fields);
}

template <BlockOrder ORDER>
struct DescribedBlock final : ProtocolRegisterBlock, IDescribedBlock
{
    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    std::vector<RegisterField> Fields() const override
    {
        return AllFields(ORDER);
    }
};

template <BlockOrder ORDER>
void OfferType(ProtocolRegisterAssemblyBase& assembly, char const* name)
{
    RegisterBlockInfoParams params;
    params.type = name;
    params.displayName = name;
    params.registerCount = REGISTERS;
    params.bytesPerRegister = 2;
    params.maxInstanceCount = 10;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<DescribedBlock<ORDER>>>();
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
}

class DescribedProtocol final : public ProtocolBase
{
public:
    explicit DescribedProtocol(ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuControl::ZuEthernetProtocol{103}, "Described", environ)
    {
        OfferType<BlockOrder::ABCD>(assembly, "All_ABCD");
        OfferType<BlockOrder::CDAB>(assembly, "All_CDAB");
        OfferType<BlockOrder::BADC>(assembly, "All_BADC");
        OfferType<BlockOrder::DCBA>(assembly, "All_DCBA");
        group.Add(assembly, actions);
        metrics.Register("controlDrops", controlDrops);
        ProtocolInitParams init;
        init.params = &params;
        init.metricsData = &metrics;
        init.registerAssemblyGroup = &group;
        Init(init);
    }

    ~DescribedProtocol() override
    {
        CloseResultHandlerGate();
    }

    void Start() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Running);
    }

    void Stop() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Stopped);
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    void ProcessResultSets(void* /*resultSets*/) override
    {
    }

    void RegisterAssemblyUpdate(char const* /*id*/) override
    {
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

private:
    Zu::Params::Group params{""};
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
    ProtocolRegisterAssemblyBase assembly{true, 0, 9999};
    ProtocolRegisterAssemblyActionTarget actions{assembly};
    ProtocolRegisterAssemblyGroup group;
};

struct DescribedFactory final : ZuControl::IControlFactory
{
    std::shared_ptr<IProtocol> Create(ControlProtocolEnviron const& environ) override
    {
        return std::make_shared<DescribedProtocol>(environ);
    }
};

class DescribedPlugin final : public ZuControl::ControlPlugin
{
public:
    DescribedPlugin()
    {
        auto const factory = std::make_shared<DescribedFactory>();
        infos.push_back(
            ZuControl::ControlInfo().SetTypeName("Described").SetDisplayName("Described").SetFactory(*factory));
        factories.push_back(factory);
    }

    static std::shared_ptr<DescribedPlugin> Make()
    {
        return std::make_shared<DescribedPlugin>();
    }
};

} // namespace

ZU_PLUGIN_ENTRY(DescribedPlugin::Make);
