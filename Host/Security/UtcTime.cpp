#include "Host/Security/UtcTime.h"

#include <array>
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
