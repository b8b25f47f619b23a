#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The names that a job may have. Each is used as the name of a file.
namespace ZuHost::JobName
{

inline constexpr std::size_t MAX_BYTES = 63;

/// Whether `name` is valid: 1 to 63 bytes of UTF-8, no separator, no control or format character
/// (Unicode categories Cc and Cf), no "..", no dot at its head.
bool IsValid(std::string_view name);

/// Returns `name` without the suffix ".zpjob". Throws `Zu::Status::BAD_ARGUMENT` with a sentence for an invalid name.
std::string Checked(std::string const& name);

} // namespace ZuHost::JobName
