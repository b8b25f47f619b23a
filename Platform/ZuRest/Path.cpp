#include "ZuRest/Path.h"

#include "ZuApi/Exception.h"

#include <charconv>
#include <string_view>

namespace ZuRest
{

namespace
{

/// Whether a character stands for itself in a segment of a path (RFC 3986, pchar).
bool IsPlain(char character)
{
    constexpr std::string_view MARKS = "-._~!$&'()*+,;=:@";
    bool const isLetter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    bool const isDigit = character >= '0' && character <= '9';
    return isLetter || isDigit || MARKS.find(character) != std::string_view::npos;
}

void AppendEscaped(std::string& path, std::string_view value)
{
    constexpr char const* DIGITS = "0123456789ABCDEF";
    for (char const character : value)
    {
        if (IsPlain(character))
        {
            path.push_back(character);
            continue;
        }
        auto const byte = static_cast<unsigned char>(character);
        path.push_back('%');
        path.push_back(DIGITS[byte >> 4U]);
        path.push_back(DIGITS[byte & 0xFU]);
    }
}

} // namespace

std::string Path::Format(std::string const& routeTemplate, std::initializer_list<std::string> values)
{
    std::string path;
    auto value = values.begin();
    bool fits = true;
    for (std::string_view rest = routeTemplate; !rest.empty();)
    {
        std::size_t const end = rest.find('/', 1);
        std::string_view const segment = rest.substr(0, end);
        rest.remove_prefix(segment.size());
        if (!segment.starts_with("/:"))
        {
            path.append(segment);
            continue;
        }
        fits = fits && value != values.end();
        if (fits)
        {
            path.push_back('/');
            AppendEscaped(path, *value++);
        }
    }
    if (!fits || value != values.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' does not take %zu values", routeTemplate.c_str(), values.size());
    }
    return path;
}

std::string Path::Decoded(std::string_view segment)
{
    std::string text(segment.substr(0, segment.find('%')));
    text.reserve(segment.size());
    for (std::size_t i = text.size(); i < segment.size(); ++i)
    {
        unsigned char byte = 0;
        char const* const digits = segment.data() + i + 1;
        bool const isEscape = segment[i] == '%' && segment.size() - i > 2 &&
                              std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        text.push_back(isEscape ? static_cast<char>(byte) : segment[i]);
        i += isEscape ? 2 : 0;
    }
    return text;
}

} // namespace ZuRest
