#include "Host/Security/UserName.h"

#include "Host/Security/UnicodeText.h"
#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuHost
{

namespace
{

/// Longer texts are refused before they are normalised. NFKC shortens a text by less than this factor.
constexpr std::size_t MAX_RAW_BYTES = 16 * UserName::MAX_BYTES;

bool IsValid(std::string const& name)
{
    if (name.empty() || name.size() > UserName::MAX_BYTES || name == "." || name == "..")
    {
        return false;
    }
    if (name.front() == ' ' || name.back() == ' ' || name.find("  ") != name.npos)
    {
        return false;
    }
    std::u32string const characters = UnicodeText::Characters(name);
    return !UnicodeText::IsCombining(characters.front()) && std::ranges::none_of(characters, [](char32_t one) {
        return UnicodeText::IsUnprintable(one) || UnicodeText::IsOddSpace(one);
    });
}

} // namespace

UserName::UserName(std::string_view newText)
{
    if (newText.size() <= MAX_RAW_BYTES)
    {
        text = UnicodeText::Normalised(newText).value_or("");
    }
    if (!IsValid(text))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The name of a user has 1 to %zu bytes of UTF-8, single spaces only between other characters, no "
                 "control, format or invisible characters, and is not '.' or '..'.",
                 MAX_BYTES);
    }
    key = UnicodeText::Folded(text);
}

std::string const& UserName::Text() const
{
    return text;
}

std::string const& UserName::Key() const
{
    return key;
}

} // namespace ZuHost
