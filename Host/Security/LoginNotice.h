#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// The text that callers see before they log in, such as the conditions of use.
namespace ZuHost::LoginNotice
{

inline constexpr std::size_t MAX_BYTES = 2000;

/// Returns the text of a file without the white space at its end. Throws `Zu::Status::BAD_ARGUMENT` with one clear line for
/// a file that cannot be read or is empty, for more than `MAX_BYTES`, and for text that is not UTF-8 or has control
/// characters other than line ends and tabs.
std::string ReadFile(std::filesystem::path const& file);

} // namespace ZuHost::LoginNotice
