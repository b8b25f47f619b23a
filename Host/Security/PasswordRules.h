#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZuHost
{

class UserName;
class WordList;

/// The rules for new passwords, after NIST SP 800-63B.
///
/// A password is the only proof of a person, so that it has at least 15 characters. There are no rules on kinds of
/// characters and no expiry. Refused are passwords that are guessed first: words of the dictionary with digits or signs
/// around them, repetitions, sequences, and texts with the name of the user or of the product.
namespace PasswordRules
{

inline constexpr std::size_t MIN_CHARACTERS = 15;
inline constexpr std::size_t MAX_BYTES = 256; ///< after normalisation; 64 characters fit in every script

/// Returns the form of a password that is hashed: NFKC, so that one password has the same bytes from every keyboard.
/// Throws `Zu::Status::BAD_ARGUMENT` for text that is not UTF-8 or too long; the text of the exception does not show it.
std::string Prepared(std::string_view password);

/// Returns a sentence on the first rule that the prepared `password` breaks; empty if it may be used.
std::string FaultOf(std::string const& password, UserName const& user, WordList const& words);

} // namespace PasswordRules

} // namespace ZuHost
