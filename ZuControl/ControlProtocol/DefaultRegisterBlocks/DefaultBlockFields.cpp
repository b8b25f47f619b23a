#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

#include <limits>
#include <typeinfo>

namespace ZuControl::ControlProtocol
{

namespace
{

constexpr uint64 INVALID_INT32 = 0x80000000;
constexpr uint64 INVALID_INT64 = 0x8000000000000000;
constexpr uint64 INVALID_UINT64 = std::numeric_limits<uint64>::max();

void AddValue(FieldList& list, char const* name, DefaultMeasurementValueRegisterBlock const& block)
{
    RegisterField& value = list.Number(name, FieldType::DINT, block.valueOffset);
    value.divisor = static_cast<uint32>(DefaultMeasurementValueRegisterBlock::VALUE_SCALE);
    value.unit = UnitOfSource(block.DataSource());
    value.invalid = INVALID_INT32;
    value.comment = "measured value";
}

void AddDecision(FieldList& list, char const* name, DefaultMeasurementDecisionRegisterBlock const& block)
{
    RegisterField& decision = list.Number(name, FieldType::USINT, block.decisionOffset);
    decision.invalid = uint64{block.invalidDecisionBit} * 2;
    decision.comment = "1: within limits, 0: not";
}

/// The fields of `block` if it is exactly a `Block`; else none.
template <typename Block>
std::vector<RegisterField> FieldsOfExact(ProtocolRegisterBlock const& block)
{
    return typeid(block) == typeid(Block) ? DefaultFields(dynamic_cast<Block const&>(block))
                                          : std::vector<RegisterField>();
}

template <typename... Blocks>
std::vector<RegisterField> FieldsOfOneOf(ProtocolRegisterBlock const& block)
{
    std::vector<RegisterField> fields;
    static_cast<void>(
        ((fields = FieldsOfExact<Blocks>(block), !fields.empty()) || ...)); // the first that knows the class
    return fields;
}

} // namespace

std::vector<RegisterField> DefaultFields(DefaultControlInputRegisterBlock const& block)
{
    FieldList list(block);
    auto const command = [](RegisterField& field, FieldRole role, char const* comment) {
        field.isWritable = true;
        field.role = role;
        field.comment = comment;
    };
    command(list.Number("requestId", FieldType::UINT, block.requestIdOffset), FieldRole::COMMAND_REQUEST_ID,
            "chosen by the client, with each command another one");
    command(list.Number("commandId", FieldType::USINT, block.commandIdOffset), FieldRole::COMMAND_ID,
            "0: nothing, 1: start, 2: stop, 3: align, 4: clear the alignment, 5: load a job, 6: trigger");
    command(list.Text("text", ControlRegisterCommandData::TEXT_SIZE, block.textOffset), FieldRole::COMMAND_TEXT,
            "name of the job to load");
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultControlOutputRegisterBlock const& block)
{
    FieldList list(block);
    RegisterField& requestId = list.Number("requestId", FieldType::UINT, block.requestIdOffset);
    requestId.role = FieldRole::ANSWER_REQUEST_ID;
    requestId.comment = "request id of the last command";
    RegisterField& status = list.Number("status", FieldType::USINT, block.statusOffset);
    status.role = FieldRole::ANSWER_STATUS;
    status.comment = "0: no command yet, 1: in progress, 2: done, 3: failed";
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultSystemStateRegisterBlock const& block)
{
    FieldList list(block);
    list.Number("value64", FieldType::ULINT, block.value64);
    list.Number("state0", FieldType::USINT, block.stateByte0);
    list.Number("jobNameLength", FieldType::USINT, block.jobFileNameLength).comment = "characters of jobName";
    list.Text("jobName", DefaultSystemStateRegisterBlock::JOB_FILE_NAME_CAPACITY, block.jobFileName).comment =
        "name of the loaded job";
    list.Number("state2", FieldType::USINT, block.stateByte2);
    list.Number("state3", FieldType::USINT, block.stateByte3);
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultScannerStateRegisterBlock const& block)
{
    FieldList list(block);
    RegisterField& encoder = list.Number("encoder", FieldType::LINT, block.encoderValue);
    encoder.invalid = INVALID_INT64;
    encoder.comment = "encoder";
    RegisterField& syncTime = list.Number("syncTime", FieldType::ULINT, block.syncTime);
    syncTime.invalid = INVALID_UINT64;
    syncTime.comment = "synchronisation time";
    list.Number("state0", FieldType::USINT, block.scannerByte0);
    list.Number("state1", FieldType::USINT, block.scannerByte1);
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultStampRegisterBlock const& block)
{
    FieldList list(block);
    list.Number("stamp", FieldType::LINT, block.valueOffset).comment = "value of the stamp";
    RegisterField& encoder = list.Number("encoder", FieldType::LINT, block.encoderOffset);
    encoder.invalid = INVALID_INT64;
    encoder.comment = "encoder at the frame";
    RegisterField& time = list.Number("time", FieldType::ULINT, block.timeOffset);
    time.unit = "us";
    time.invalid = INVALID_UINT64;
    time.comment = "time of the frame";
    list.Number("counter", FieldType::ULINT, block.counterOffset).comment = "frames since the scan started, from 0";
    list.Number("inputs", FieldType::USINT, block.digitalInputsOffset).comment =
        "digital inputs: bit 0 the first, bit 1 the second";
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultMeasurementValueRegisterBlock const& block)
{
    FieldList list(block);
    AddValue(list, "valueAlone", block);
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultMeasurementDecisionRegisterBlock const& block)
{
    FieldList list(block);
    AddDecision(list, "decisionAlone", block);
    return list.Take();
}

std::vector<RegisterField> DefaultFields(DefaultMeasurementValueAndDecisionRegisterBlock const& block)
{
    FieldList list(block);
    AddValue(list, "value", block);
    AddDecision(list, "decision", block);
    return list.Take();
}

std::vector<RegisterField> FieldsOf(ProtocolRegisterBlock const& block)
{
    if (auto const* const described = dynamic_cast<IDescribedBlock const*>(&block); described != nullptr)
    {
        return described->Fields();
    }
    return FieldsOfOneOf<DefaultControlInputRegisterBlock, DefaultControlOutputRegisterBlock,
                         DefaultSystemStateRegisterBlock, DefaultScannerStateRegisterBlock, DefaultStampRegisterBlock,
                         DefaultMeasurementValueRegisterBlock, DefaultMeasurementDecisionRegisterBlock,
                         DefaultMeasurementValueAndDecisionRegisterBlock>(block);
}

} // namespace ZuControl::ControlProtocol
