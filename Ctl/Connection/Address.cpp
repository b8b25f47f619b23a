#include "Ctl/Connection/Address.h"

#include "Ctl/Outcome/Failure.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace ZuCtl
{

namespace
{

constexpr std::uint16_t PLAIN_PORT = 8080;
constexpr std::uint16_t ENCRYPTED_PORT = 8443;

[[noreturn]] void Refuse(std::string const& text)
{
    throw Failure(ExitStatus::USAGE, "'" + text + "' is no address of a sensor, such as https://10.0.0.7:8443");
}

bool IsOfAHost(char character)
{
    return std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_:").find(character) !=
           std::string_view::npos;
}

std::uint16_t ParsePort(std::string_view digits, std::string const& text)
{
    std::uint16_t port = 0;
    auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    if (result.ec != std::errc{} || result.ptr != digits.data() + digits.size() || port == 0)
    {
        Refuse(text);
    }
    return port;
}

/// Cuts the scheme off. Returns whether it is https.
bool TakeScheme(std::string_view& rest, std::string const& text)
{
    std::size_t const end = rest.find("://");
    if (end == std::string_view::npos)
    {
        return false;
    }
    std::string_view const scheme = rest.substr(0, end);
    if (scheme != "http" && scheme != "https")
    {
        Refuse(text);
    }
    rest.remove_prefix(end + 3);
    return scheme == "https";
}

} // namespace

Address Address::Parse(std::string const& text)
{
    std::string_view rest = text;
    Address address;
    address.isEncrypted = TakeScheme(rest, text);
    address.port = address.isEncrypted ? ENCRYPTED_PORT : PLAIN_PORT;
    if (rest.ends_with('/'))
    {
        rest.remove_suffix(1);
    }
    std::size_t const bracket = rest.starts_with('[') ? rest.find(']') : 0;
    if (bracket == std::string_view::npos)
    {
        Refuse(text);
    }
    std::size_t const colon = rest.find(':', bracket);
    if (colon != std::string_view::npos)
    {
        address.port = ParsePort(rest.substr(colon + 1), text);
        rest = rest.substr(0, colon);
    }
    if (bracket != 0)
    {
        if (rest.size() != bracket + 1)
        {
            Refuse(text);
        }
        rest = rest.substr(1, bracket - 1);
    }
    if (rest.empty() || !std::ranges::all_of(rest, IsOfAHost))
    {
        Refuse(text);
    }
    address.host = rest;
    return address;
}

std::string Address::Url() const
{
    std::string const name = host.find(':') != std::string::npos ? '[' + host + ']' : host;
    return (isEncrypted ? "https://" : "http://") + name + ':' + std::to_string(port);
}

bool Address::IsThisMachine() const
{
    bool const isDotted = host.find_first_not_of("0123456789.") == std::string::npos;
    return host == "localhost" || host == "::1" || (isDotted && host.starts_with("127."));
}

std::string Escaped(std::string const& text)
{
    constexpr std::string_view PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.~";
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    std::string escaped;
    for (char const character : text)
    {
        if (PLAIN.find(character) != std::string_view::npos)
        {
            escaped += character;
            continue;
        }
        auto const byte = static_cast<unsigned char>(character);
        escaped += '%';
        escaped += DIGITS[byte / 16u];
        escaped += DIGITS[byte % 16u];
    }
    return escaped;
}

} // namespace ZuCtl
