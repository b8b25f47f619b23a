#include "ZuControl/ControlProtocol/RegisterField.h"

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ZuControl::ControlProtocol
{

namespace
{

/// The sensor's measurements of lengths. Its other measurements count something.
constexpr std::array LENGTHS = {"profile/zMax", "profile/zMin", "profile/width", "profile/meanZ"};

/// `fields` are in the order of their registers.
bool DoOverlap(std::vector<RegisterField> const& fields)
{
    return std::ranges::adjacent_find(fields, [](RegisterField const& left, RegisterField const& right) {
               return left.offset + uint32{left.count} > right.offset;
           }) != fields.end();
}

} // namespace

IDescribedBlock::IDescribedBlock() noexcept = default;
IDescribedBlock::~IDescribedBlock() = default;

char const* UnitOfSource(std::string const& source)
{
    return std::ranges::find(LENGTHS, source) != LENGTHS.end() ? "mm" : "";
}

uint32 SizeOf(FieldType type)
{
    switch (type)
    {
    case FieldType::BOOL:
    case FieldType::USINT:
        return 1;
    case FieldType::BIT:
    case FieldType::INT:
    case FieldType::UINT:
        return 2;
    case FieldType::DINT:
    case FieldType::UDINT:
    case FieldType::REAL:
        return 4;
    case FieldType::LINT:
    case FieldType::ULINT:
    case FieldType::LREAL:
        return 8;
    case FieldType::TEXT:
    case FieldType::RAW:
        break;
    }
    return 0;
}

FieldList::FieldList(ProtocolRegisterBlock const& describedBlock) : block(describedBlock)
{
}

FieldList::~FieldList() = default;

RegisterField& FieldList::Number(char const* name, FieldType type, size_t byteOffset)
{
    RegisterField& field = Add(name, byteOffset);
    bool const isWidened = type == FieldType::USINT && block.BytesPerRegister() == 2;
    field.type = isWidened ? FieldType::UINT : type;
    field.count = static_cast<uint16>(SizeOf(field.type) / std::max<uint32>(block.BytesPerRegister(), 1));
    return field;
}

RegisterField& FieldList::Text(char const* name, size_t length, size_t byteOffset)
{
    RegisterField& field = Add(name, byteOffset);
    field.type = FieldType::TEXT;
    field.count = static_cast<uint16>(length);
    return field;
}

RegisterField& FieldList::Add(char const* name, size_t byteOffset)
{
    size_t const bytesPerRegister = std::max<size_t>(block.BytesPerRegister(), 1);
    isAligned = isAligned && byteOffset % bytesPerRegister == 0;
    RegisterField& field = fields.emplace_back();
    field.name = name;
    field.offset = static_cast<uint16>(byteOffset / bytesPerRegister);
    return field;
}

std::vector<RegisterField> FieldList::Take()
{
    std::ranges::sort(fields, {}, &RegisterField::offset);
    return isAligned && !DoOverlap(fields) ? std::move(fields) : std::vector<RegisterField>();
}

} // namespace ZuControl::ControlProtocol
