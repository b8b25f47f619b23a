#include "Ctl/Commands/Shown.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace ZuCtl
{

nlohmann::json WithoutLinks(nlohmann::json document)
{
    if (document.is_object())
    {
        document.erase("_links");
        document.erase("_embedded");
    }
    return document;
}

std::string Rounded(nlohmann::json const& number)
{
    if (!number.is_number())
    {
        return "-";
    }
    double const rounded = std::round(number.get<double>() * 1000) / 1000;
    char text[64];
    std::snprintf(text, sizeof text, "%.10g", rounded == 0 ? 0.0 : rounded);
    return text;
}

std::string Duration(nlohmann::json const& seconds)
{
    constexpr double LONGEST = 1e15; // a server may send any number
    auto const whole = static_cast<std::uint64_t>(std::clamp(seconds.get<double>(), 0.0, LONGEST));
    std::uint64_t const minutes = whole / 60;
    std::uint64_t const hours = minutes / 60;
    if (hours >= 24)
    {
        return std::to_string(hours / 24) + " d " + std::to_string(hours % 24) + " h";
    }
    if (hours > 0)
    {
        return std::to_string(hours) + " h " + std::to_string(minutes % 60) + " min";
    }
    return minutes > 0 ? std::to_string(minutes) + " min" : std::to_string(whole) + " s";
}

std::string Shown(nlohmann::json const& document, char const* member)
{
    auto const found = document.find(member);
    if (found == document.end() || found->is_null())
    {
        return "-";
    }
    return found->is_string() ? found->get<std::string>() : found->dump();
}

} // namespace ZuCtl
