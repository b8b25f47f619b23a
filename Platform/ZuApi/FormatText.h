#pragma once

#include "wApi/wExport.h"

#include <cstdarg>
#include <string>

namespace Zu
{

/// What printf would write; the empty text for a null format.
ZUAPI_API std::string FormatText(char const* format, std::va_list arguments);

} // namespace Zu
