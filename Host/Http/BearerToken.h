#pragma once

#include <string_view>

/// The token that clients from outside of this machine show.
namespace ZuHost::BearerToken
{

/// Whether the value of the header Authorization shows `token`; always when that is empty. How long it takes tells nothing of
/// the token but its length.
bool IsGiven(std::string_view token, std::string_view header) noexcept;

} // namespace ZuHost::BearerToken
