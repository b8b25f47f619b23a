#include "ZuControl/Plc/PlcWords.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace ZuControl::Plc
{

using ControlProtocol::FieldArea;
using ControlProtocol::FieldRole;
using ControlProtocol::FieldType;
using ControlProtocol::RegisterField;

namespace
{

/// The name at the number of an enumerator.
template <typename Enum, std::size_t COUNT>
char const* NameIn(std::array<char const*, COUNT> const& names, Enum value)
{
    auto const index = static_cast<std::size_t>(value);
    return index < COUNT ? names[index] : "";
}

} // namespace

char const* NameOf(FieldType type)
{
    static constexpr std::array NAMES = {"BOOL", "BIT",   "USINT", "INT",   "UINT", "DINT", "UDINT",
                                         "LINT", "ULINT", "REAL",  "LREAL", "TEXT", "RAW"};
    return NameIn(NAMES, type);
}

char const* NameOf(FieldRole role)
{
    static constexpr std::array NAMES = {"value",           "commandRequestId", "commandId",      "commandText",
                                         "answerRequestId", "answerStatus",     "fingerprint",    "queueAcknowledge",
                                         "queueNumber",     "queueSession",     "queueLostBefore"};
    return NameIn(NAMES, role);
}

char const* NameOf(FieldArea area)
{
    static constexpr std::array NAMES = {"registers", "coils", "discreteInputs"};
    return NameIn(NAMES, area);
}

std::string TableAddress(FieldArea area, uint32 address)
{
    static constexpr std::array FIRST = {400'001u, 1u, 100'001u};
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), "%06u", FIRST[static_cast<std::size_t>(area)] + unsigned{address});
    return digits.data();
}

std::string ScaleText(uint32 divisor)
{
    std::array<char, 32> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), 1.0 / divisor);
    return {digits.data(), end.ptr};
}

std::string InvalidText(RegisterField const& field)
{
    if (!field.invalid.has_value())
    {
        return "";
    }
    if (field.type == FieldType::REAL || field.type == FieldType::LREAL)
    {
        return "NaN";
    }
    if (!IsSigned(field.type))
    {
        return std::to_string(*field.invalid);
    }
    uint32 const unused = 64 - 8 * SizeOf(field.type);
    return std::to_string(static_cast<int64>(*field.invalid << unused) >> unused);
}

bool IsSigned(FieldType type)
{
    return type == FieldType::INT || type == FieldType::DINT || type == FieldType::LINT || type == FieldType::REAL ||
           type == FieldType::LREAL;
}

} // namespace ZuControl::Plc
