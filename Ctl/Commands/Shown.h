#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace ZuCtl
{

/// Without the members `_links` and `_embedded` of HAL.
nlohmann::json WithoutLinks(nlohmann::json document);

/// A number with at most three decimals, such as "25" or "49.967"; "-" for null.
std::string Rounded(nlohmann::json const& number);

/// Seconds as "3 d 4 h", "5 h 12 min", "7 min" or "9 s".
std::string Duration(nlohmann::json const& seconds);

/// A text as it is, any other value as JSON; "-" for null and for a missing member.
std::string Shown(nlohmann::json const& document, char const* member);

} // namespace ZuCtl
