#include "Plugins/ModbusTcp/ModbusBlocks.h"

#include "Plugins/ModbusTcp/Blocks/DecisionBitsBlock.h"
#include "Plugins/ModbusTcp/Blocks/MapFingerprintBlock.h"
#include "Plugins/ModbusTcp/Blocks/MeasurementRealBlock.h"
#include "Plugins/ModbusTcp/Blocks/OrderTestBlock.h"
#include "Plugins/ModbusTcp/Blocks/OrderedBlock.h"
#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"
#include "Plugins/ModbusTcp/Blocks/StateBitsBlock.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "ZuControl/ControlProtocol/AssemblyLock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <algorithm>
#include <memory>
#include <span>
#include <type_traits>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr uint8 BYTES_PER_REGISTER = 2;
constexpr uint16 ANY_NUMBER = 65534;

struct BlockType
{
    char const* type;
    char const* displayName;
    RegisterBlockCategory category;
    uint16 registerCount;
    uint16 deserializedInputSize; // in bytes
    uint16 minInstanceCount;
    uint16 maxInstanceCount;
    bool hasDataSource;
};

// Each of the first four is required exactly once, the Scanner block included: clients expect all four.
constexpr BlockType CONTROL_INPUT{TYPE_CONTROL_INPUT, "Control Input", BlockCategoryControlInput, 66, 132, 1, 1, false};
constexpr BlockType CONTROL_OUTPUT{
    TYPE_CONTROL_OUTPUT, "Control Output", BlockCategoryControlOutput, 2, 0, 1, 1, false};
constexpr BlockType SYSTEM{TYPE_SYSTEM, "System State", BlockCategorySystem, 72, 0, 1, 1, false};
constexpr BlockType SCANNER{TYPE_SCANNER, "Sensor Group State", BlockCategoryScanner, 10, 0, 1, 1, false};
constexpr BlockType STAMP{TYPE_STAMP, "Stamp", BlockCategoryStamp, 20, 0, 0, ANY_NUMBER, true};
constexpr BlockType MEASUREMENT_VALUE{
    TYPE_MEASUREMENT_VALUE, "Measurement", BlockCategoryMeasurement, 2, 0, 0, ANY_NUMBER, true};
constexpr BlockType DECISION{TYPE_DECISION, "Decision", BlockCategoryMeasurement, 1, 0, 0, ANY_NUMBER, true};
constexpr BlockType MEASUREMENT{
    TYPE_MEASUREMENT, "Measurement and Decision", BlockCategoryMeasurement, 3, 0, 0, ANY_NUMBER, true};
constexpr BlockType STATE_BITS{
    StateBitsBlock::TYPE, "State Bits", BlockCategorySystem, StateBitsBlock::REGISTER_COUNT, 0, 0, 1, false};
constexpr BlockType DECISION_BITS{DecisionBitsBlock::TYPE,
                                  "Decision Bits",
                                  BlockCategoryMeasurement,
                                  DecisionBitsBlock::REGISTER_COUNT,
                                  0,
                                  0,
                                  ANY_NUMBER,
                                  true};
constexpr BlockType RESULT_QUEUE{ResultQueueBlock::TYPE,
                                 "Result Queue",
                                 BlockCategoryMeasurement,
                                 ResultQueueBlock::REGISTER_COUNT,
                                 2,
                                 0,
                                 ResultQueueBlock::MAX_INSTANCES,
                                 true};
constexpr BlockType MEASUREMENT_REAL{MeasurementRealBlock::TYPE,
                                     "Measurement as REAL",
                                     BlockCategoryMeasurement,
                                     MeasurementRealBlock::REGISTERS,
                                     0,
                                     0,
                                     ANY_NUMBER,
                                     true};

constexpr BlockType MAP_FINGERPRINT{MapFingerprintBlock::TYPE,
                                    "Map Fingerprint",
                                    BlockCategorySystem,
                                    MapFingerprintBlock::REGISTERS,
                                    0,
                                    0,
                                    ANY_NUMBER,
                                    false};

constexpr BlockType ORDER_TEST{
    OrderTestBlock::TYPE, "Order Test", BlockCategoryUnknown, OrderTestBlock::REGISTERS, 0, 0, ANY_NUMBER, false};

template <typename Block>
void AddType(IProtocolRegisterAssembly& assembly, BlockType const& blockType)
{
    RegisterBlockInfoParams params;
    params.type = blockType.type;
    params.displayName = blockType.displayName;
    params.category = blockType.category;
    params.deserializedInputSize = blockType.deserializedInputSize;
    params.registerCount = blockType.registerCount;
    params.bytesPerRegister = BYTES_PER_REGISTER;
    params.minInstanceCount = blockType.minInstanceCount;
    params.maxInstanceCount = blockType.maxInstanceCount;
    params.hasDataSource = blockType.hasDataSource;
    if constexpr (std::is_final_v<Block>) // keeps the order of the service
    {
        params.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
        assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
    }
    else
    {
        assembly.AddSupportedBlockType(std::make_unique<OrderedBlockType<Block>>(params));
    }
}

/// What the plug-in kit puts into a field to which the default block gives no meaning.
struct Meaning
{
    char const* field;
    char const* name;
    char const* unit;
    char const* comment;
};

std::vector<RegisterField> WithMeanings(std::vector<RegisterField> fields, std::span<Meaning const> meanings)
{
    for (Meaning const& meaning : meanings)
    {
        auto const field = std::ranges::find(fields, meaning.field, &RegisterField::name);
        field->name = meaning.name;
        field->unit = meaning.unit;
        field->comment = meaning.comment;
    }
    return fields;
}

constexpr Meaning SYSTEM_MEANINGS[] = {
    {"value64", "upTime", "s", "time since the start of the sensor"},
    {"state0", "runState", "", "0: ready, 1: running, 2: error"},
    {"state2", "linkState", "", "link status of the first network interface, at most 255"},
    {"state3", "problems", "", "number of problems on record, at most 255"},
};

struct Coil
{
    char const* name;
    bool isWritable;
    char const* comment;
};

/// The coils in the order of their numbers.
constexpr Coil COILS[] = {
    {"anyCoil", false, "1 while any command of this protocol runs"},
    {"startCoil", true, "1 starts the scan"},
    {"stopCoil", true, "1 stops the scan"},
    {"alignCoil", true, "1 aligns the scanner"},
    {"clearCoil", true, "1 clears the alignment"},
    {"loadCoil", true, "1 loads the job whose name stands in the text"},
    {"triggerCoil", true, "1 triggers one extra profile"},
};

constexpr Meaning SCANNER_MEANINGS[] = {
    {"state0", "alignState", "", "0: not aligned, 1: being aligned, 2: aligned"},
    {"state1", "laserOn", "", "1: the laser is enabled"},
};

} // namespace

ModbusControlInputBlock::ModbusControlInputBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : DefaultControlInputRegisterBlock(params, usedInfo)
{
    textOffset = 4; // after the register of the command id, which has a register of its own
}

ModbusControlInputBlock::~ModbusControlInputBlock() = default;

std::vector<RegisterField> ModbusControlInputBlock::Fields() const
{
    std::vector<RegisterField> fields = DefaultFields(*this);
    uint16 number = 0;
    for (Coil const& coil : COILS)
    {
        RegisterField& field = fields.emplace_back();
        field.name = coil.name;
        field.type = FieldType::BOOL;
        field.area = FieldArea::COILS;
        field.offset = number++;
        field.isWritable = coil.isWritable;
        field.comment = coil.comment;
    }
    return fields;
}

ModbusSystemBlock::ModbusSystemBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : DefaultSystemStateRegisterBlock(params, usedInfo)
{
    stateByte0 = 8;
    value64 = 0;
    jobFileNameLength = 10;
    jobFileName = 12;
    stateByte2 = 140;
    stateByte3 = 142;
}

ModbusSystemBlock::~ModbusSystemBlock() = default;

std::vector<RegisterField> ModbusSystemBlock::Fields() const
{
    return WithMeanings(DefaultFields(*this), SYSTEM_MEANINGS);
}

ModbusScannerBlock::ModbusScannerBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : DefaultScannerStateRegisterBlock(params, usedInfo)
{
    scannerByte0 = 16;
    encoderValue = 0;
    syncTime = 8;
    scannerByte1 = 18;
}

ModbusScannerBlock::~ModbusScannerBlock() = default;

std::vector<RegisterField> ModbusScannerBlock::Fields() const
{
    return WithMeanings(DefaultFields(*this), SCANNER_MEANINGS);
}

void AddModbusBlockTypes(IProtocolRegisterAssembly& assembly)
{
    AddType<ModbusControlInputBlock>(assembly, CONTROL_INPUT);
    AddType<DefaultControlOutputRegisterBlock>(assembly, CONTROL_OUTPUT);
    AddType<ModbusSystemBlock>(assembly, SYSTEM);
    AddType<ModbusScannerBlock>(assembly, SCANNER);
    AddType<DefaultStampRegisterBlock>(assembly, STAMP);
    AddType<DefaultMeasurementValueRegisterBlock>(assembly, MEASUREMENT_VALUE);
    AddType<DefaultMeasurementDecisionRegisterBlock>(assembly, DECISION);
    AddType<DefaultMeasurementValueAndDecisionRegisterBlock>(assembly, MEASUREMENT);
    AddType<StateBitsBlock>(assembly, STATE_BITS);
    AddType<DecisionBitsBlock>(assembly, DECISION_BITS);
    AddType<ResultQueueBlock>(assembly, RESULT_QUEUE);
    AddType<MeasurementRealBlock>(assembly, MEASUREMENT_REAL);
    AddType<MapFingerprintBlock>(assembly, MAP_FINGERPRINT);
    AddType<OrderTestBlock>(assembly, ORDER_TEST);
}

void ChangeOrder(ProtocolRegisterAssemblyBase& assembly, BlockOrder order)
{
    AssemblyLock const guard(assembly); // no layout is read between the two changes
    for (auto const& type : assembly.SupportedRegisterBlockTypes())
    {
        if (auto* const ours = dynamic_cast<ModbusBlockType*>(type.get()); ours != nullptr)
        {
            ours->SetAreBytesSwapped(order.areBytesSwapped);
        }
    }
    assembly.ChangeBigEndianSupportedBlocks(order.isBigEndian); // last: notes the change
}

namespace
{

struct DefaultBlock
{
    char const* type;
    uint16 outputId;
    char const* dataSource;
};

constexpr DefaultBlock DEFAULT_BLOCKS[] = {
    {TYPE_CONTROL_INPUT, 0, ""},
    {TYPE_CONTROL_OUTPUT, 66, ""},
    {TYPE_SYSTEM, 68, ""},
    {TYPE_SCANNER, 140, ""},
    {TYPE_STAMP, 150, "profile/stamp"},
    {TYPE_MEASUREMENT, 170, "profile/zMax"},
    {TYPE_MEASUREMENT, 173, "profile/zMin"},
    {TYPE_MEASUREMENT, 176, "profile/width"},
    {TYPE_MEASUREMENT, 179, "profile/meanZ"},
    {TYPE_MEASUREMENT, 182, "profile/points"},
};

} // namespace

void ConfigureDefaultJob(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly)
{
    ZuControl::ControlProtocol::AddBlockParams params;
    for (DefaultBlock const& block : DEFAULT_BLOCKS)
    {
        auto& added = params.blocks.Add();
        added.type.Set(block.type);
        added.outputId.Set(block.outputId);
        added.dataSource.Set(block.dataSource);
    }
    AssemblyLock const guard(assembly);
    assembly.ResetRegisterAssembly();
    assembly.Add(params);
}

} // namespace ModbusTcp
