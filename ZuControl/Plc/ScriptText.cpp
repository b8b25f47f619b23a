#include "ZuControl/Plc/ScriptText.h"

#include "wApi/wTypes.h"

#include <array>
#include <cstdio>

namespace ZuControl::Plc
{

namespace
{

constexpr uint32 NO_CHARACTER = 0xFFFFFFFF;

/// Takes the first character off `text`, which is not empty; `NO_CHARACTER` for a byte that begins none.
uint32 TakeCharacter(std::string_view& text)
{
    auto const first = static_cast<uint8>(text.front());
    std::size_t const length = first < 0x80           ? 1
                               : (first >> 5) == 0x06 ? 2
                               : (first >> 4) == 0x0E ? 3
                               : (first >> 3) == 0x1E ? 4
                                                      : 0;
    if (length == 0 || text.size() < length)
    {
        text.remove_prefix(1);
        return NO_CHARACTER;
    }
    uint32 character = length == 1 ? first : first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i)
    {
        auto const byte = static_cast<uint8>(text[i]);
        if ((byte & 0xC0) != 0x80)
        {
            text.remove_prefix(i);
            return NO_CHARACTER;
        }
        character = character << 6 | (byte & 0x3Fu);
    }
    text.remove_prefix(length);
    return character;
}

bool IsControl(uint32 character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

/// Letters and signs of Latin alphabets, beyond ASCII.
bool IsLatin(uint32 character)
{
    return character >= 0xA1 && character < 0x250 && character != 0xAD;
}

std::string Formatted(char const* format, uint32 number)
{
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), format, unsigned{number});
    return digits.data();
}

} // namespace

std::string CommentText(std::string_view text)
{
    std::string comment;
    while (!text.empty())
    {
        std::string_view const rest = text;
        uint32 const character = TakeCharacter(text);
        if (IsControl(character))
        {
            comment += ' ';
        }
        else if (character < 0x80 || IsLatin(character))
        {
            comment += rest.substr(0, rest.size() - text.size());
        }
        else
        {
            comment += '?';
        }
    }
    return comment;
}

std::string PythonLiteral(std::string_view text)
{
    std::string literal = "\"";
    while (!text.empty())
    {
        uint32 const character = TakeCharacter(text);
        if (character == NO_CHARACTER || character > 0x10FFFF)
        {
            literal += '?';
        }
        else if (character == '"' || character == '\\')
        {
            literal += {'\\', static_cast<char>(character)};
        }
        else if (character >= 0x20 && character < 0x7F)
        {
            literal += static_cast<char>(character);
        }
        else
        {
            literal += Formatted("\\U%08x", character);
        }
    }
    return literal + '"';
}

} // namespace ZuControl::Plc
