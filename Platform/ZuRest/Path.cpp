#include "ZuRest/Path.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace ZuRest
{

namespace
{

/// The characters that stand for themselves in a path segment (RFC 3986, pchar).
constexpr std::array<bool, 256> PLAIN = [] {
    std::array<bool, 256> plain{};
    for (char const mark : std::string_view("-._~!$&'()*+,;=:@"))
    {
        plain[static_cast<unsigned char>(mark)] = true;
    }
    for (unsigned i = 0; i < 26; ++i)
    {
        plain['a' + i] = plain['A' + i] = true;
    }
    for (unsigned i = 0; i < 10; ++i)
    {
        plain['0' + i] = true;
    }
    return plain;
}();

void AppendEscaped(std::string& path, std::string_view value)
{
    constexpr char const* DIGITS = "0123456789ABCDEF";
    while (!value.empty())
    {
        auto const isPlain = [](char character) { return PLAIN[static_cast<unsigned char>(character)]; };
        auto const plain = static_cast<std::size_t>(std::ranges::find_if_not(value, isPlain) - value.begin());
        path.append(value.substr(0, plain));
        value.remove_prefix(plain);
        if (!value.empty())
        {
            auto const byte = static_cast<unsigned char>(value.front());
            path.push_back('%');
            path.push_back(DIGITS[byte >> 4U]);
            path.push_back(DIGITS[byte & 0xFU]);
            value.remove_prefix(1);
        }
    }
}

} // namespace

std::string Path::Format(std::string_view routeTemplate, std::initializer_list<std::string_view> values)
{
    std::string path;
    std::size_t bytes = routeTemplate.size(); // enough, unless many bytes must be escaped
    for (std::string_view const value : values)
    {
        bytes += value.size();
    }
    path.reserve(bytes);
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
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' does not take %zu values", std::string(routeTemplate).c_str(),
                 values.size());
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
