#pragma once

#include "Plugins/AsciiTcp/Reading.h"
#include "wApi/wTypes.h"

#include <string>
#include <string_view>

/// How things stand on a line of the protocol. Texts are bytes; those above 127 go through as they are.
namespace AsciiTcp
{

/// More digits behind the point than any measurement has.
inline constexpr uint32 MOST_DECIMALS = 9;

/// Whether `text` has no control character: bytes below 32 and 127.
bool IsPrintable(std::string_view text);

/// Appends a name as one word: a blank, a control character, '=' and '%' as '%' with two hexadecimal digits.
void AppendName(std::string& line, std::string_view name);

/// The name that is meant by `written`: each '%' with two hexadecimal digits is a byte, all else stands for itself.
std::string ReadName(std::string_view written);

/// Appends the number with `decimals` digits behind the point, "none" or "invalid". Nothing depends on the locale, and there
/// is no negative zero. More than MOST_DECIMALS count as that.
void AppendValue(std::string& line, Reading const& reading, uint32 decimals);

void AppendNumber(std::string& line, uint64 number);

/// Appends "ERROR status text"; what would break the line is a blank.
void AppendError(std::string& line, int32 status, std::string_view text);

} // namespace AsciiTcp
