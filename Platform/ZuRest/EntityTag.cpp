#include "ZuRest/EntityTag.h"

#include "wApi/wTypes.h"

#define XXH_INLINE_ALL // inlined for speed: each document that is sent gets a tag

#include <algorithm>
#include <array>
#include <charconv>
#include <xxhash.h>

namespace ZuRest::EntityTag
{

namespace
{

std::string_view Trimmed(std::string_view text)
{
    std::size_t const first = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

} // namespace

std::string Of(std::string_view text)
{
    uint64 const hash = XXH3_64bits(text.data(), text.size());
    std::array<char, 16> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, 16).ptr;
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
