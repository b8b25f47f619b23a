#pragma once

#include "Host/CommandLine/Options.h"

#include <string>
#include <string_view>

namespace ZuHost
{

/// `text` without the characters that change the display or begin a new line: control characters, those that change the
/// direction of the text, and bytes that are no UTF-8. An escape as in a JSON text or "\\x1b" stands in place of each.
std::string Printable(std::string_view text);

/// One line of the log, of printable text, with the present time and a line feed at its end.
std::string LogLine(LogLevel level, std::string_view label, std::string_view text);

} // namespace ZuHost
