#pragma once

#include "Host/CommandLine/Options.h"

#include <string>
#include <string_view>

namespace ZuHost
{

/// One line of the log, with the present time and a line feed at its end.
std::string LogLine(LogLevel level, std::string_view label, std::string_view text);

} // namespace ZuHost
