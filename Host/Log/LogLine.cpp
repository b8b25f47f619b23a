#include "Host/Log/LogLine.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace ZuHost
{

namespace
{

/// The present time: "2026-02-03 14:05:06.789", of the machine's time zone.
std::string TimeText()
{
    auto const now = std::chrono::system_clock::now();
    auto const msec = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::time_t const seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    std::size_t const size = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(text.data() + size, text.size() - size, ".%03d", static_cast<int>(msec));
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

} // namespace

std::string LogLine(LogLevel level, std::string_view label, std::string_view text)
{
    std::string line = TimeText();
    line.append(" ").append(LevelText(level)).append(" [").append(label).append("] ").append(text).append("\n");
    return line;
}

} // namespace ZuHost
