#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Unicode forms of the names and passwords that people type.
namespace ZuHost::UnicodeText
{

/// Returns the text in the normalisation form NFKC, so that one text has the same bytes from every keyboard. Returns
/// nothing for bytes that are not UTF-8.
std::optional<std::string> Normalised(std::string_view text);

/// Returns the form of a normalised text in which texts that differ only in case are equal. It is for comparisons and is
/// not shown.
std::string Folded(std::string_view text);

/// The code points of a normalised text.
std::u32string Characters(std::string_view text);

/// Whether the character is a control, format, private or unassigned character, a surrogate, or one that is invisible.
bool IsUnprintable(char32_t character);

/// Whether the character is white space other than the plain space.
bool IsOddSpace(char32_t character);

/// Whether the character is shown together with the character before it.
bool IsCombining(char32_t character);

} // namespace ZuHost::UnicodeText
