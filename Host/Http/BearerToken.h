#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The token that clients from outside of this machine show.
namespace ZuHost::BearerToken
{

/// Shorter ones are guessed too soon.
inline constexpr std::size_t MIN_BYTES = 16;

/// The token that a file holds: its first line, without the blanks around it. Throws -997 with one clear line for a file that
/// cannot be read and for what is no token: too short, or of other characters than a header may carry.
std::string ReadFile(std::filesystem::path const& file);

/// Whether the value of the header Authorization shows `token`; always when that is empty. How long it takes tells nothing of
/// the token but its length.
bool IsGiven(std::string_view token, std::string_view header) noexcept;

} // namespace ZuHost::BearerToken
