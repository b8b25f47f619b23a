#pragma once

#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

/// Prepares texts for the trail.
namespace ZuHost::TrailText
{

inline constexpr std::size_t MAX_PARAMETER_BYTES = 4096; ///< of the parameters before and after
inline constexpr std::size_t MAX_NAME_BYTES = 512;       ///< of the other texts of an entry
inline constexpr char const* MASK = "***";

/// Whether a value of this name is a secret: the last word of the name is password, code, token, key or secret. Words
/// begin with a capital letter or follow any character that is neither letter nor digit: "privateKey", "api_token".
bool IsSecretName(std::string_view name);

/// Replaces the values of members with the name of a secret, at any depth.
void Mask(nlohmann::json& document);

/// The text as the trail keeps it: secrets in a JSON text are masked, control characters are escapes, and a text over
/// MAX_PARAMETER_BYTES is cut with a mark. A text that begins like JSON but is none could hide a secret, and one
/// with a NUL is a file: only their size is kept.
std::string Parameters(std::string_view text);

/// A text of one line, cut after MAX_NAME_BYTES with a mark.
std::string Name(std::string_view text);

/// The members of two documents that differ, as JSON texts with secrets masked. Members whose names begin with an
/// underscore are left out. An array of another size counts as one value.
struct Difference
{
    std::string before;
    std::string after;
};
Difference DifferenceOf(std::string_view before, std::string_view after);

/// Microseconds since 1970 in UTC, as in RFC 3339: "2026-01-31T23:59:59.999999Z".
std::string TimeOf(int64 usec);

} // namespace ZuHost::TrailText
