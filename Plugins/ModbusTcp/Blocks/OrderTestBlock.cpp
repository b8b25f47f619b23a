#include "Plugins/ModbusTcp/Blocks/OrderTestBlock.h"

#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "ZuApi/Exception.h"

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr OrderPattern PATTERNS[] = {
    {"UINT", FieldType::UINT, "testUint", 0, 1, 0x3039, "12345"},
    {"INT", FieldType::INT, "testInt", 1, 1, 0xCFC7, "-12345"},
    {"UDINT", FieldType::UDINT, "testUdint", 2, 2, 0x499602D2, "1234567890"},
    {"DINT", FieldType::DINT, "testDint", 4, 2, 0xB669FD2E, "-1234567890"},
    {"ULINT", FieldType::ULINT, "testUlint", 6, 4, 0xAB54A98CEB1F0AD2, "12345678901234567890"},
    {"LINT", FieldType::LINT, "testLint", 10, 4, 0xEEDDEF0B82167EEB, "-1234567890123456789"},
    {"REAL", FieldType::REAL, "testReal", 14, 2, 0x42F6E979, "123.456"},
    {"LREAL", FieldType::LREAL, "testLreal", 16, 4, 0x40FE240C9FBE76C9, "123456.789"},
    {"STRING", FieldType::TEXT, "testText", 20, 4, 0x4142434445464748, "ABCDEFGH"},
};

void WriteText(RegisterEncoder const& encoder, uint8* where, OrderPattern const& pattern)
{
    for (uint16 i = 0; i < pattern.registers; ++i)
    {
        encoder.Write(where + 2 * i, static_cast<uint16>(pattern.bits >> 16 * (pattern.registers - 1 - i)));
    }
}

void WritePattern(RegisterEncoder const& encoder, uint8* where, OrderPattern const& pattern)
{
    if (pattern.fieldType == FieldType::TEXT)
    {
        WriteText(encoder, where, pattern);
        return;
    }
    switch (pattern.registers)
    {
    case 1:
        encoder.Write(where, static_cast<uint16>(pattern.bits));
        break;
    case 2:
        encoder.Write(where, static_cast<uint32>(pattern.bits));
        break;
    default:
        encoder.Write(where, pattern.bits);
        break;
    }
}

} // namespace

std::span<OrderPattern const> OrderPatterns()
{
    return PATTERNS;
}

OrderTestBlock::OrderTestBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

OrderTestBlock::~OrderTestBlock() = default;

void OrderTestBlock::Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize)
{
    if (destination == nullptr || destinationSize != 2 * REGISTERS || source == nullptr ||
        sourceSize != sizeof(LayoutFacts))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE);
    }
    for (OrderPattern const& pattern : PATTERNS)
    {
        WritePattern(ValueEncoder(), static_cast<uint8*>(destination) + 2 * pattern.offset, pattern);
    }
}

std::vector<RegisterField> OrderTestBlock::Fields() const
{
    std::vector<RegisterField> fields;
    for (OrderPattern const& pattern : PATTERNS)
    {
        RegisterField& field = fields.emplace_back();
        field.name = pattern.field;
        field.type = pattern.fieldType;
        field.offset = pattern.offset;
        field.count = pattern.registers;
        field.charactersPerRegister = pattern.fieldType == FieldType::TEXT ? 2 : 1;
        field.comment = std::string("always ") + pattern.shown;
    }
    return fields;
}

} // namespace ModbusTcp
