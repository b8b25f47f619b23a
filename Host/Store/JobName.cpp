#include "Host/Store/JobName.h"

#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ZuHost
{

namespace
{

using ZuCommon::PersistManager;

/// Characters from `first` to `last`.
struct Range
{
    char32_t first;
    char32_t last;
};

// Control characters, line and paragraph separators, and the characters that only change how others are shown (general
// category Cf): with them two names can look alike, and a name can look like another text in a log or a list.
constexpr std::array FORBIDDEN{
    Range{0x00, 0x1F},       Range{'/', '/'},         Range{'\\', '\\'},       Range{0x7F, 0x9F},
    Range{0xAD, 0xAD},       Range{0x600, 0x605},     Range{0x61C, 0x61C},     Range{0x6DD, 0x6DD},
    Range{0x70F, 0x70F},     Range{0x890, 0x891},     Range{0x8E2, 0x8E2},     Range{0x180E, 0x180E},
    Range{0x200B, 0x200F},   Range{0x2028, 0x202E},   Range{0x2060, 0x206F},   Range{0xFEFF, 0xFEFF},
    Range{0xFFF9, 0xFFFB},   Range{0x110BD, 0x110BD}, Range{0x110CD, 0x110CD}, Range{0x13430, 0x1343F},
    Range{0x1BCA0, 0x1BCA3}, Range{0x1D173, 0x1D17A}, Range{0xE0000, 0xE007F},
};

bool IsForbidden(char32_t character)
{
    return std::ranges::any_of(
        FORBIDDEN, [character](Range const& range) { return character >= range.first && character <= range.last; });
}

/// The form of a UTF-8 character with a first byte from `firstByte` to `lastByte`, and the least character that may use
/// this form.
struct Form
{
    unsigned char firstByte;
    unsigned char lastByte;
    std::size_t length;
    char32_t least;
};

constexpr std::array FORMS{Form{0x00, 0x7F, 1, 0}, Form{0xC2, 0xDF, 2, 0x80}, Form{0xE0, 0xEF, 3, 0x800},
                           Form{0xF0, 0xF4, 4, 0x10000}};

/// Takes the first character from `text`, which is not empty. Returns nothing if the bytes are not UTF-8: a byte is
/// missing, the form is too long, or the character is a surrogate or above U+10FFFF.
std::optional<char32_t> TakeCharacter(std::string_view& text)
{
    auto const first = static_cast<unsigned char>(text.front());
    auto const form = std::ranges::find_if(
        FORMS, [first](Form const& one) { return first >= one.firstByte && first <= one.lastByte; });
    if (form == FORMS.end() || form->length > text.size())
    {
        return std::nullopt;
    }
    char32_t character = form->length == 1 ? first : first & (0x7FU >> form->length);
    for (char const next : text.substr(1, form->length - 1))
    {
        auto const byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0U) != 0x80)
        {
            return std::nullopt;
        }
        character = (character << 6U) | (byte & 0x3FU);
    }
    text.remove_prefix(form->length);
    bool const isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < form->least || isSurrogate || character > 0x10FFFF ? std::nullopt : std::optional(character);
}

bool HasOnlyAllowedCharacters(std::string_view text)
{
    while (!text.empty())
    {
        std::optional<char32_t> const character = TakeCharacter(text);
        if (!character.has_value() || IsForbidden(*character))
        {
            return false;
        }
    }
    return true;
}

/// Whether `name` is valid without the suffix of its file.
bool IsValid(std::string_view name)
{
    // A suffix that is left over would be stripped when the name is given once more: two names for one job.
    return !name.empty() && name.size() <= JobName::MAX_BYTES && name.front() != '.' && name.find("..") == name.npos &&
           !name.ends_with(PersistManager::JOB_SUFFIX) && HasOnlyAllowedCharacters(name);
}

} // namespace

JobName::JobName(std::string const& newText) : text(PersistManager::NameWithoutSuffix(newText))
{
    if (!IsValid(text))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "'%s' cannot be the name of a job: 1 to %zu bytes of UTF-8, no '/', '\\', '..', control or format "
                 "character, no dot at the head, and at most one '%s' at the end",
                 newText.c_str(), MAX_BYTES, PersistManager::JOB_SUFFIX);
    }
}

std::optional<JobName> JobName::OfFile(std::string const& fileName)
{
    bool const isJob =
        fileName.ends_with(PersistManager::JOB_SUFFIX) && IsValid(PersistManager::NameWithoutSuffix(fileName));
    return isJob ? std::optional(JobName(fileName)) : std::nullopt;
}

std::string const& JobName::Text() const
{
    return text;
}

std::string JobName::FileName() const
{
    return text + PersistManager::JOB_SUFFIX;
}

} // namespace ZuHost
