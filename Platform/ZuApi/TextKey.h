#pragma once

#include "wApi/wTypes.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace Zu::Properties::Internal
{

/// A text with its hash, to look up the one that is kept for all equal ones; see `InternedText`.
///
/// As a parameter it takes literals, whose hash the compiler works out, and texts made at run time. It keeps no copy.
class TextKey
{
public:
    template <std::size_t SIZE>
    consteval TextKey(char const (&literal)[SIZE]) noexcept : TextKey(std::string_view(literal), true)
    {
    }

    TextKey(std::string const& text) noexcept : TextKey(std::string_view(text), false)
    {
    }

    template <std::same_as<char const*> Pointer> // a plain parameter would take the literals too
    TextKey(Pointer const& text) noexcept : TextKey(std::string_view(text), false)
    {
    }

    explicit constexpr TextKey(std::string_view text) noexcept : TextKey(text, false)
    {
    }

    constexpr std::string_view Text() const noexcept
    {
        return text;
    }

    constexpr uint64 Hash() const noexcept
    {
        return hash;
    }

    /// There are only as many literals as the program has, so that they may be kept for good.
    constexpr bool IsLiteral() const noexcept
    {
        return isLiteral;
    }

private:
    constexpr TextKey(std::string_view newText, bool isFixed) noexcept
        : text(newText), hash(HashOf(newText)), isLiteral(isFixed)
    {
    }

    static constexpr uint64 HashOf(std::string_view hashed) noexcept // FNV-1a
    {
        uint64 sum = 0xCBF29CE484222325;
        for (char const character : hashed)
        {
            sum = (sum ^ static_cast<unsigned char>(character)) * 0x100000001B3;
        }
        return sum;
    }

    std::string_view text;
    uint64 hash;
    bool isLiteral;
};

} // namespace Zu::Properties::Internal
