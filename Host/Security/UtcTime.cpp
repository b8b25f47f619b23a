#include "Host/Security/UtcTime.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace ZuHost::UtcTime
{

namespace
{

constexpr char const* FORM = "%Y-%m-%dT%H:%M:%SZ";

} // namespace

int64 Now()
{
    return std::time(nullptr);
}

std::string Text(int64 seconds)
{
    std::time_t const time = seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), FORM, &parts);
    return text.data();
}

std::string TextWithMilliseconds(uint64 usec)
{
    std::string text = Text(static_cast<int64>(usec / 1'000'000));
    std::array<char, 8> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03uZ", static_cast<unsigned>(usec / 1'000 % 1'000));
    text.replace(text.size() - 1, 1, fraction.data());
    return text;
}

uint64 NowUsec()
{
    auto const sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64>(std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count());
}

std::optional<int64> Parse(std::string const& text)
{
    std::tm parts{};
    char const* const end = strptime(text.c_str(), FORM, &parts);
    if (end == nullptr)
    {
        return std::nullopt;
    }
    int64 const seconds = timegm(&parts);
    return Text(seconds) == text ? std::optional(seconds) : std::nullopt; // it also takes other forms, and 31 February
}

} // namespace ZuHost::UtcTime
