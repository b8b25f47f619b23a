#pragma once

#include "wApi/wTypes.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace Zu::Properties::Internal
{

/// A text with its hash, to look up the shared entry of all equal texts; see `InternedText`.
///
/// As a parameter it accepts literals and run-time texts. The compiler computes the hash of a literal. It keeps no
/// copy.
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

    template <std::same_as<char const*> Pointer> // a template: a plain parameter would also accept literals
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

    /// Whether the text is a literal. A program has a bounded number of literals, so their entries are never freed.
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
