#include "ZuRest/EntityTag.h"

#include "wApi/wTypes.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ZuRest::EntityTag
{

namespace
{

/// 64-bit FNV-1a.
uint64 HashOf(std::string_view text)
{
    uint64 hash = 0xCBF29CE484222325U;
    for (char const character : text)
    {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
    }
    return hash;
}

std::string_view Trimmed(std::string_view text)
{
    std::size_t const first = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

} // namespace

std::string Of(std::string_view text)
{
    std::array<char, 16> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), HashOf(text), 16).ptr;
    return "\"" + std::string(digits.data(), end) + "\"";
}

bool IsNamed(std::string_view header, std::string_view tag)
{
    while (!header.empty())
    {
        std::string_view one = header.substr(0, header.find(','));
        header.remove_prefix(std::min(one.size() + 1, header.size()));
        one = Trimmed(one);
        if (one == "*" || one == tag || (one.starts_with("W/") && one.substr(2) == tag))
        {
            return true;
        }
    }
    return false;
}

} // namespace ZuRest::EntityTag
