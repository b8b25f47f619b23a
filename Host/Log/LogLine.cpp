#include "Host/Log/LogLine.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace ZuHost
{

namespace
{

/// The present time as in RFC 3339: "2026-02-03T14:05:06.789+01:00", of the machine's time zone.
std::string TimeText()
{
    auto const now = std::chrono::system_clock::now();
    auto const msec = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::time_t const seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    std::size_t const size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &local);
    long const zoneMinutes = std::labs(local.tm_gmtoff) / 60;
    std::snprintf(text.data() + size, text.size() - size, ".%03d%c%02ld:%02ld", static_cast<int>(msec),
                  local.tm_gmtoff < 0 ? '-' : '+', zoneMinutes / 60, zoneMinutes % 60);
    return text.data();
}

/// As wide as the widest, so that the labels stand below each other.
char const* LevelText(LogLevel level)
{
    switch (level)
    {
    case LogLevel::INFO:
        return "info   ";
    case LogLevel::WARNING:
        return "warning";
    default:
        return "error  ";
    }
}

/// The character that `text` begins with, and its bytes; 0 bytes if it is no UTF-8.
struct Character
{
    uint32 code = 0;
    std::size_t bytes = 0;
};

Character FirstOf(std::string_view text)
{
    auto const lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80)
    {
        return {lead, 1};
    }
    std::size_t const bytes = lead >= 0xF0 && lead < 0xF5 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead >= 0xF5 || text.size() < bytes)
    {
        return {};
    }
    uint32 code = lead & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i)
    {
        auto const next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80)
        {
            return {};
        }
        code = code << 6 | (next & 0x3F);
    }
    return {code, bytes};
}

bool IsPrintable(uint32 code)
{
    bool const isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    bool const isSeparatorOrDirection = code == 0x061C || code == 0x200E || code == 0x200F ||
                                        (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return !isControl && !isSeparatorOrDirection;
}

void AppendEscape(std::string& shown, uint32 code, bool isCharacter)
{
    switch (code)
    {
    case '\n':
        shown += "\\n";
        return;
    case '\r':
        shown += "\\r";
        return;
    case '\t':
        shown += "\\t";
        return;
    default:
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), isCharacter && code >= 0x80 ? "\\u%04x" : "\\x%02x", code);
        shown += text.data();
    }
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty())
    {
        Character const character = FirstOf(text);
        std::size_t const bytes = character.bytes > 0 ? character.bytes : 1;
        if (character.bytes > 0 && IsPrintable(character.code))
        {
            shown += text.substr(0, bytes);
        }
        else
        {
            uint32 const code = character.bytes > 0 ? character.code : static_cast<unsigned char>(text.front());
            AppendEscape(shown, code, character.bytes > 0);
        }
        text.remove_prefix(bytes);
    }
    return shown;
}

std::string LogLine(LogLevel level, std::string_view label, std::string_view text)
{
    std::string line = TimeText();
    line.append(" ")
        .append(LevelText(level))
        .append(" [")
        .append(Printable(label))
        .append("] ")
        .append(Printable(text))
        .append("\n");
    return line;
}

} // namespace ZuHost
