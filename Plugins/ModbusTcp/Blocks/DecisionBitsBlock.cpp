#include "Plugins/ModbusTcp/Blocks/DecisionBitsBlock.h"

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <cstring>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

DecisionBitsBlock::DecisionBitsBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : SourceListBlock(params, usedInfo)
{
}

DecisionBitsBlock::~DecisionBitsBlock() = default;

void DecisionBitsBlock::Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize)
{
    CheckSizes(destination, destinationSize, source, sourceSize, sizeof(Bits));
    Bits encoded;
    std::memcpy(&encoded, source, sizeof encoded);
    RegisterEncoder const encoder = ValueEncoder();
    auto* const bytes = static_cast<uint8*>(destination);
    encoder.Write(bytes, encoded.decisions);
    encoder.Write(bytes + 2, encoded.valid);
}

std::vector<RegisterField> DecisionBitsBlock::Fields() const
{
    std::vector<RegisterField> fields;
    RegisterField field;
    field.type = FieldType::BIT;
    field.name = "decisionBit";
    field.comment = "1: within limits";
    auto const atPlace = [&field](std::size_t place) {
        field.bit = static_cast<uint8>(place);
        return field;
    };
    AddFields(fields, atPlace);
    field.offset = 1;
    field.name = "decisionIsValid";
    field.comment = "1: the decision is valid";
    AddFields(fields, atPlace);
    return fields;
}

void DecisionBitsBlock::Take(std::size_t place, Reading const& reading)
{
    auto const bit = static_cast<uint16>(1u << place);
    auto const others = static_cast<uint16>(~bit);
    bool const isValid = reading.measurement.has_value();
    bool const isWithin = isValid && reading.measurement->decision == 1;
    bits.valid = static_cast<uint16>((bits.valid & others) | (isValid ? bit : 0));
    bits.decisions = static_cast<uint16>((bits.decisions & others) | (isWithin ? bit : 0));
}

SourceListBlock::Outcome DecisionBitsBlock::EndSet()
{
    bool const isChanged = bits != shown;
    shown = bits;
    return {isChanged, false};
}

void DecisionBitsBlock::Blank()
{
    bits = {};
    shown = {};
}

void DecisionBitsBlock::Encode(std::span<uint8> bytes)
{
    Serialize(bytes.data(), bytes.size(), &bits, sizeof bits);
}

uint64 DecisionBitsBlock::Clear()
{
    Blank();
    return 0; // the next set has the decisions again
}

} // namespace ModbusTcp
