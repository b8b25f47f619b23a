#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The names that a job may have, since each becomes the name of a file.
namespace ZuHost::JobName
{

inline constexpr std::size_t MAX_BYTES = 63;

/// Whether `name` is one: 1 to 63 bytes of UTF-8 without a separator, a control character or a dot at its head.
bool IsValid(std::string_view name);

/// `name` without the suffix ".zpjob". Throws -997 with a sentence for what is no name.
std::string Checked(std::string const& name);

} // namespace ZuHost::JobName
