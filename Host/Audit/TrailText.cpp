#include "Host/Audit/TrailText.h"

#include "Host/Log/LogLine.h"
#include "ZuApi/Exception.h"
#include "ZuRest/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <optional>
#include <set>

namespace ZuHost::TrailText
{

namespace
{

using Json = nlohmann::json;

constexpr std::array<std::string_view, 6> SECRETS{"password", "passwd", "code", "token", "key", "secret"};
constexpr int64 USEC_PER_SECOND = 1'000'000;

bool IsUpper(char character)
{
    return std::isupper(static_cast<unsigned char>(character)) != 0;
}

bool IsWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

/// The last word of a name in small letters. A name in capitals is one word.
std::string LastWord(std::string_view name)
{
    std::string word;
    for (std::size_t i = name.size(); i-- > 0;)
    {
        if (!IsWordCharacter(name[i]))
        {
            if (word.empty())
            {
                continue;
            }
            break;
        }
        word.insert(word.begin(), static_cast<char>(std::tolower(static_cast<unsigned char>(name[i]))));
        if (IsUpper(name[i]) && (i == 0 || !IsUpper(name[i - 1])))
        {
            break;
        }
    }
    return word;
}

/// At most `most` bytes of UTF-8, and a mark if something is missing.
std::string Cut(std::string text, std::size_t most)
{
    if (text.size() <= most)
    {
        return text;
    }
    std::string const mark = "... (" + std::to_string(text.size()) + " bytes)";
    std::size_t end = most - mark.size();
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) // not within a character
    {
        --end;
    }
    return text.substr(0, end) + mark;
}

bool LooksLikeJson(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    return first != std::string_view::npos && (text[first] == '{' || text[first] == '[');
}

std::optional<Json> Parsed(std::string_view text)
{
    try
    {
        return ZuRest::JsonText::Read(text);
    }
    catch (Zu::Exception const&)
    {
        return std::nullopt;
    }
}

/// Keeps of two values the members that differ.
void Reduce(Json& before, Json& after)
{
    bool const areObjects = before.is_object() && after.is_object();
    bool const areArrays = before.is_array() && after.is_array() && before.size() == after.size();
    if (!areObjects && !areArrays)
    {
        return;
    }
    Json oldPart = Json::object();
    Json newPart = Json::object();
    auto const take = [&](std::string const& name, Json* oldValue, Json* newValue) {
        if (oldValue != nullptr && newValue != nullptr)
        {
            if (*oldValue == *newValue)
            {
                return;
            }
            Reduce(*oldValue, *newValue);
        }
        if (oldValue != nullptr)
        {
            oldPart[name] = std::move(*oldValue);
        }
        if (newValue != nullptr)
        {
            newPart[name] = std::move(*newValue);
        }
    };
    if (areArrays)
    {
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            take(std::to_string(i), &before[i], &after[i]);
        }
    }
    else
    {
        std::set<std::string> names;
        for (Json const* const document : {&before, &after})
        {
            for (auto const& [name, value] : document->items())
            {
                names.insert(name);
            }
        }
        for (std::string const& name : names)
        {
            if (!name.starts_with('_')) // links, the schema and embedded documents
            {
                take(name, before.contains(name) ? &before[name] : nullptr,
                     after.contains(name) ? &after[name] : nullptr);
            }
        }
    }
    before = std::move(oldPart);
    after = std::move(newPart);
}

std::string Written(Json& document)
{
    Mask(document);
    return Cut(ZuRest::JsonText::Write(document), MAX_PARAMETER_BYTES);
}

} // namespace

bool IsSecretName(std::string_view name)
{
    std::string const word = LastWord(name);
    std::string small(name);
    std::ranges::transform(small, small.begin(), [](unsigned char byte) { return std::tolower(byte); });
    return std::ranges::any_of(SECRETS, [&](std::string_view secret) { return word == secret || small == secret; });
}

void Mask(Json& document)
{
    for (auto& [name, value] : document.items())
    {
        if (document.is_object() && IsSecretName(name))
        {
            value = MASK;
        }
        else if (value.is_structured())
        {
            Mask(value);
        }
    }
}

std::string Parameters(std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    if (std::optional<Json> document = Parsed(text); document.has_value())
    {
        return document->is_structured() ? Written(*document) : Cut(Printable(text), MAX_PARAMETER_BYTES);
    }
    if (LooksLikeJson(text) || text.find('\0') != std::string_view::npos)
    {
        return "(" + std::to_string(text.size()) + " bytes)";
    }
    return Cut(Printable(text.substr(0, MAX_PARAMETER_BYTES + 1)), MAX_PARAMETER_BYTES);
}

std::string Name(std::string_view text)
{
    return Cut(Printable(text.substr(0, 2 * MAX_NAME_BYTES)), MAX_NAME_BYTES);
}

Difference DifferenceOf(std::string_view before, std::string_view after)
{
    std::optional<Json> oldDocument = Parsed(before);
    std::optional<Json> newDocument = Parsed(after);
    if (!oldDocument.has_value() || !newDocument.has_value())
    {
        return {Parameters(before), Parameters(after)};
    }
    Reduce(*oldDocument, *newDocument);
    return {Written(*oldDocument), Written(*newDocument)};
}

std::string TimeOf(int64 usec)
{
    int64 const fraction = ((usec % USEC_PER_SECOND) + USEC_PER_SECOND) % USEC_PER_SECOND; // also before 1970
    auto const seconds = static_cast<std::time_t>((usec - fraction) / USEC_PER_SECOND);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 48> text{};
    std::size_t const size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text.data() + size, text.size() - size, ".%06dZ", static_cast<int>(fraction));
    return text.data();
}

} // namespace ZuHost::TrailText
