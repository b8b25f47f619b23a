#include "ZuControl/Plc/PlcNames.h"

#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/Plc/ReservedWords.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <utility>

namespace ZuControl::Plc
{

namespace
{

constexpr std::size_t MOST_FIELD_CHARACTERS = 16;

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// The ASCII form of a German letter in UTF-8 at the start of `text`; empty if there is none.
std::string_view Transliterated(std::string_view text)
{
    static constexpr std::pair<std::string_view, std::string_view> LETTERS[] = {
        {"\xC3\xA4", "ae"}, {"\xC3\xB6", "oe"}, {"\xC3\xBC", "ue"}, {"\xC3\x9F", "ss"},
        {"\xC3\x84", "Ae"}, {"\xC3\x96", "Oe"}, {"\xC3\x9C", "Ue"},
    };
    auto const* const found =
        std::ranges::find_if(LETTERS, [text](auto const& letter) { return text.starts_with(letter.first); });
    return found != std::end(LETTERS) ? found->second : std::string_view();
}

/// `text` with legal characters alone: single underscores stand for all others, none first or last.
std::string Legal(std::string_view text)
{
    std::string legal;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (std::string_view const letters = Transliterated(text.substr(i)); !letters.empty())
        {
            legal += letters;
            ++i; // of two bytes
        }
        else if (IsLetter(text[i]) || IsDigit(text[i]))
        {
            legal += text[i];
        }
        else if (!legal.empty() && legal.back() != '_')
        {
            legal += '_';
        }
    }
    if (!legal.empty() && legal.back() == '_')
    {
        legal.pop_back();
    }
    return legal.empty() || IsDigit(legal.front()) ? "n" + legal : legal;
}

/// The source of a tag, or what stands for it.
std::string OriginOf(PlcTag const& tag, bool hasSeveralAssemblies)
{
    std::string const origin = tag.source.empty() ? tag.blockType : tag.source;
    return hasSeveralAssemblies ? tag.assembly + "/" + origin : origin;
}

/// What the value of a tag is: the same for two tags that show the same value.
std::string MeaningOf(PlcTag const& tag)
{
    std::string meaning;
    for (std::string const& part : {tag.assembly, tag.blockType, tag.source, tag.scannerId, tag.field.name})
    {
        meaning += part + '\0';
    }
    return meaning;
}

std::string HashOf(std::string const& text)
{
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", unsigned{ControlProtocol::Fingerprint::Crc32(text)});
    return digits.data();
}

/// The three parts joined by underscores. The origin is cut so that the name has at most `MOST_CHARACTERS`.
std::string Joined(std::string origin, std::string field, std::string const& suffix)
{
    field.resize(std::min(field.size(), MOST_FIELD_CHARACTERS));
    std::string const end = "_" + field + (suffix.empty() ? "" : "_" + suffix);
    origin.resize(std::min(origin.size(), MOST_CHARACTERS - end.size()));
    while (origin.ends_with('_'))
    {
        origin.pop_back();
    }
    return origin + end;
}

/// The name of a tag that no other tag contests.
std::string OwnName(PlcTag const& tag, bool hasSeveralAssemblies)
{
    std::string const origin = OriginOf(tag, hasSeveralAssemblies);
    std::string const legal = Legal(origin);
    std::string const field = Legal(tag.field.name);
    std::string plain = legal + "_" + field;
    std::string slashless = origin;
    std::ranges::replace(slashless, '/', '_');
    bool const isUnchanged = slashless == legal && field == tag.field.name && field.size() <= MOST_FIELD_CHARACTERS &&
                             plain.size() <= MOST_CHARACTERS;
    return isUnchanged && !IsReservedWord(plain) ? plain : Joined(legal, field, HashOf(MeaningOf(tag)));
}

using Tags = std::vector<PlcTag*>;

/// Appends a suffix to the names of `tags`, which all have the same name.
void Separate(Tags const& tags)
{
    std::string const meaning = MeaningOf(*tags.front());
    bool const isOneMeaning =
        std::ranges::all_of(tags, [&meaning](PlcTag const* tag) { return MeaningOf(*tag) == meaning; });
    std::map<std::string, uint32> seen; // how many tags have a meaning
    for (PlcTag* const tag : tags)
    {
        bool const isFirst = seen[MeaningOf(*tag)]++ == 0;
        std::string suffix = isOneMeaning ? "" : HashOf(MeaningOf(*tag));
        if (!isFirst)
        {
            suffix = isOneMeaning ? std::to_string(tag->blockAddress) : HashOf(suffix + std::to_string(tag->address));
        }
        if (!suffix.empty())
        {
            std::size_t const end = tag->name.rfind('_');
            tag->name = Joined(tag->name.substr(0, end), tag->name.substr(end + 1), suffix);
        }
    }
}

/// Makes names unique that the rules have left equal: of hashes that collide, and of fields of one block with one name.
void MakeUnique(std::vector<PlcTag>& tags)
{
    std::set<std::string> used;
    for (PlcTag& tag : tags)
    {
        std::string const name = tag.name;
        for (uint32 attempt = 0; !used.insert(Lower(tag.name)).second; ++attempt)
        {
            tag.name = Joined(name, "x",
                              HashOf(MeaningOf(tag) + std::to_string(tag.address) + ' ' +
                                     std::to_string(tag.field.bit) + ' ' + std::to_string(attempt)));
        }
    }
}

} // namespace

void NameTags(std::vector<PlcTag>& tags, bool hasSeveralAssemblies)
{
    std::map<std::string, Tags> groups;
    for (PlcTag& tag : tags)
    {
        tag.name = OwnName(tag, hasSeveralAssemblies);
        groups[Lower(tag.name)].push_back(&tag);
    }
    for (auto const& [name, group] : groups)
    {
        if (group.size() > 1)
        {
            Separate(group);
        }
    }
    MakeUnique(tags);
}

std::string LegalName(std::string_view text, std::size_t mostCharacters)
{
    std::string legal = Legal(text);
    if (legal == text && legal.size() <= mostCharacters && !IsReservedWord(legal))
    {
        return legal;
    }
    std::string const hash = HashOf(std::string(text));
    legal.resize(std::min(legal.size(), mostCharacters - hash.size() - 1));
    return (legal.ends_with('_') ? legal : legal + '_') + hash;
}

bool IsReservedWord(std::string_view word)
{
    return std::ranges::binary_search(RESERVED_WORDS, std::string_view(Lower(word)));
}

} // namespace ZuControl::Plc
