#include "Host/Security/UnicodeText.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <unicase.h>
#include <unictype.h>
#include <uninorm.h>
#include <unistr.h>

namespace ZuHost::UnicodeText
{

namespace
{

struct Freed
{
    void operator()(uint8_t* memory) const noexcept
    {
        std::free(memory);
    }
};

uint8_t const* BytesOf(std::string_view text)
{
    return reinterpret_cast<uint8_t const*>(text.data());
}

/// Copies the result of the library, which is null only if there was no memory.
std::string Taken(uint8_t* result, std::size_t bytes)
{
    std::unique_ptr<uint8_t, Freed> const owner(result);
    if (owner == nullptr)
    {
        throw std::bad_alloc();
    }
    return {reinterpret_cast<char const*>(owner.get()), bytes};
}

bool IsOfCategory(char32_t character, uint32_t mask)
{
    return uc_is_general_category_withtable(character, mask);
}

} // namespace

std::optional<std::string> Normalised(std::string_view text)
{
    if (text.empty())
    {
        return std::string();
    }
    if (u8_check(BytesOf(text), text.size()) != nullptr)
    {
        return std::nullopt;
    }
    std::size_t bytes = 0;
    uint8_t* const result = u8_normalize(UNINORM_NFKC, BytesOf(text), text.size(), nullptr, &bytes);
    return Taken(result, bytes);
}

std::string Folded(std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    std::size_t bytes = 0;
    uint8_t* const result = u8_casefold(BytesOf(text), text.size(), nullptr, UNINORM_NFKC, nullptr,
                                        &bytes); // no language: one rule for all
    return Taken(result, bytes);
}

std::u32string Characters(std::string_view text)
{
    std::u32string characters;
    while (!text.empty())
    {
        ucs4_t character = 0;
        int const bytes = u8_mbtoucr(&character, BytesOf(text), text.size());
        if (bytes <= 0)
        {
            break;
        }
        characters.push_back(character);
        text.remove_prefix(static_cast<std::size_t>(bytes));
    }
    return characters;
}

bool IsUnprintable(char32_t character)
{
    return IsOfCategory(character, UC_CATEGORY_MASK_C) || uc_is_property_default_ignorable_code_point(character);
}

bool IsOddSpace(char32_t character)
{
    return character != U' ' && (IsOfCategory(character, UC_CATEGORY_MASK_Z) || uc_is_property_white_space(character));
}

bool IsCombining(char32_t character)
{
    return IsOfCategory(character, UC_CATEGORY_MASK_M);
}

} // namespace ZuHost::UnicodeText
