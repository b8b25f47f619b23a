#pragma once

#include "wApi/wMutex.h"

#include <filesystem>
#include <string>
#include <string_view>

/// The token that clients show when the service is reachable from other machines.
namespace ZuHost::BearerToken
{

/// Shorter tokens are too easy to guess.
inline constexpr std::size_t MIN_BYTES = 16;

/// Returns the first line of a file without the blanks around it. Throws `Zu::Status::BAD_ARGUMENT` with one clear line
/// when the file cannot be read, when others than its owner can read or change it, and when the line is too short or has characters that a header may not carry.
std::string ReadFile(std::filesystem::path const& file);

/// Returns the token in a value of the header Authorization; empty if there is none.
std::string_view In(std::string_view header) noexcept;

/// Whether the value of the header Authorization shows `token`; true for an empty token. The time of the call depends
/// only on the length of the token, not on its content.
bool IsGiven(std::string_view token, std::string_view header) noexcept;

} // namespace ZuHost::BearerToken

namespace ZuHost
{

/// A token that may be replaced while requests are checked. Any thread may call.
class CurrentToken final
{
public:
    explicit CurrentToken(std::string newToken);
    ~CurrentToken();

    CurrentToken(CurrentToken const&) = delete;
    CurrentToken& operator=(CurrentToken const&) = delete;

    void Set(std::string newToken);

    bool IsEmpty() const noexcept;

    /// As `BearerToken::IsGiven`.
    bool IsGiven(std::string_view header) const noexcept;

private:
    mutable Zu::Mutex lock; // a leaf
    std::string token ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
