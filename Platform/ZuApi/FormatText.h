#pragma once

#include "wApi/wExport.h"

#include <cstdarg>
#include <string>

namespace Zu
{

/// Formats as printf does. A null format gives the empty text.
ZUAPI_API std::string FormatText(char const* format, std::va_list arguments);

} // namespace Zu
