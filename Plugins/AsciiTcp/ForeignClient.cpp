#include "Plugins/AsciiTcp/ForeignClient.h"

#include <algorithm>

namespace AsciiTcp
{

namespace
{

constexpr std::string_view LINE_BLANKS = " \t\r";
constexpr std::string_view HTTP = " HTTP/";
constexpr std::string_view VERSION_CHARACTERS = "0123456789.";
constexpr std::string_view HOST = "host:";
constexpr std::string_view TLS_HANDSHAKE = "\x16\x03"; // content type and major version of the first record

char SmallLetter(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

} // namespace

bool EndsInHttpVersion(std::string_view line)
{
    std::string_view const text = line.substr(0, line.find_last_not_of(LINE_BLANKS) + 1);
    std::string_view const beforeVersion = text.substr(0, text.find_last_not_of(VERSION_CHARACTERS) + 1);
    return beforeVersion.size() < text.size() && beforeVersion.ends_with(HTTP);
}

bool IsHostField(std::string_view line)
{
    std::string_view const text = line.substr(std::min(line.find_first_not_of(LINE_BLANKS), line.size()));
    return std::ranges::equal(text.substr(0, HOST.size()), HOST, {}, SmallLetter);
}

bool IsTlsHello(std::string_view bytes)
{
    return bytes.starts_with(TLS_HANDSHAKE);
}

} // namespace AsciiTcp
