#include "ZuCommon/Role.h"

#include <array>

namespace ZuCommon
{

namespace
{

constexpr std::array NAMES{"none", "viewer", "operator", "engineer", "administrator"}; // in the order of `Role`

} // namespace

char const* RoleName(Role role) noexcept
{
    return NAMES[static_cast<std::size_t>(role)];
}

std::optional<Role> RoleOfName(std::string_view name) noexcept
{
    for (std::size_t i = 1; i < NAMES.size(); ++i)
    {
        if (name == NAMES[i])
        {
            return static_cast<Role>(i);
        }
    }
    return std::nullopt;
}

} // namespace ZuCommon
