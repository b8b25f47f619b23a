#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

/// The name that needs the fewest letters added, removed or replaced to become `text`; the first of several. Empty if each
/// name needs more than half the letters of `text`.
std::string NearestName(std::string_view text, std::vector<std::string> const& names);

} // namespace ZuHost
