#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <string_view>

/// The text format of the protocol's lines. Texts are bytes; bytes above 127 are passed unchanged.
namespace AsciiTcp
{

/// The value of an output at one moment.
struct Reading
{
    enum class State : uint8
    {
        NONE,    ///< no result yet
        INVALID, ///< the last result has no number
        VALID
    };

    State state = State::NONE;
    uint8 decision = 0; ///< 1 within limits
    double value = 0;   ///< finite if VALID
};

/// Maximum number of digits after the decimal point.
inline constexpr uint32 MOST_DECIMALS = 9;

/// Whether `text` has no control character (bytes below 32, and 127).
bool IsPrintable(std::string_view text);

/// Appends a name as one word: a blank, a control character, '=' and '%' become '%' with two hexadecimal digits.
void AppendName(std::string& line, std::string_view name);

/// Decodes a name: each '%' with two hexadecimal digits is a byte; all other bytes are unchanged.
std::string ReadName(std::string_view written);

/// Appends the number with `decimals` digits after the point (at most MOST_DECIMALS), or "none" or "invalid". The
/// result does not depend on the locale, and zero has no sign.
void AppendValue(std::string& line, Reading const& reading, uint32 decimals);

void AppendNumber(std::string& line, uint64 number);

/// Appends "ERROR status text". Characters that would break the line become blanks.
void AppendError(std::string& line, int32 status, std::string_view text);

} // namespace AsciiTcp
