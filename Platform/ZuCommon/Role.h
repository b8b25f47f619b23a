#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <optional>
#include <string_view>

namespace ZuCommon
{

/// What a person or a program may do. Each role may do what the roles before it may do.
enum class Role : uint8
{
    NONE,         ///< nothing but what is open to everybody
    VIEWER,       ///< reads
    OPERATOR,     ///< runs the sensor: start, stop, align, trigger, load a job
    ENGINEER,     ///< changes the configuration and the jobs
    ADMINISTRATOR ///< manages users, tokens and certificates, restarts
};

/// The name of a role in documents: "viewer", "operator", "engineer", "administrator"; "none".
ZUPLATFORM_API char const* RoleName(Role role) noexcept;

/// The role of a name as `RoleName` gives it, "none" excepted. Returns nothing for any other text.
ZUPLATFORM_API std::optional<Role> RoleOfName(std::string_view name) noexcept;

} // namespace ZuCommon
