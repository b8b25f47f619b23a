#include "ZuRest/EntityTag.h"

#include "wApi/wTypes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace ZuRest::EntityTag
{

namespace
{

/// Eight bytes at a time: documents are long, and each that is sent gets a tag.
uint64 HashOf(std::string_view text)
{
    constexpr uint64 MULTIPLIER = 0x9E3779B97F4A7C15U; // odd, its bits in no order
    uint64 hash = text.size() * MULTIPLIER;
    auto const take = [&hash](uint64 word) {
        hash = (hash ^ word) * MULTIPLIER;
        hash ^= hash >> 32U; // a product moves nothing down
    };
    uint64 word = 0;
    for (; text.size() >= sizeof(word); text.remove_prefix(sizeof(word)))
    {
        std::memcpy(&word, text.data(), sizeof(word)); // of a fixed size: one load
        take(word);
    }
    word = 0;
    std::memcpy(&word, text.data(), text.size());
    take(word);
    return hash * MULTIPLIER;
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
