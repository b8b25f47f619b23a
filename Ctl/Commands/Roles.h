#pragma once

#include <string>
#include <vector>

namespace ZuCtl
{

/// The roles of callers, the least one first.
inline std::vector<std::string> RoleNames()
{
    return {"viewer", "operator", "engineer", "administrator"};
}

} // namespace ZuCtl
