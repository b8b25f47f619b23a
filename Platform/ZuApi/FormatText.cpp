#include "ZuApi/FormatText.h"

#include <cstdio>

namespace Zu
{

std::string FormatText(char const* format, std::va_list arguments)
{
    if (format == nullptr)
    {
        return {};
    }
    std::va_list again;
    va_copy(again, arguments);
    char shortText[256];
    int const length = std::vsnprintf(shortText, sizeof shortText, format, arguments);
    std::string text;
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof shortText)
    {
        text.assign(shortText, static_cast<std::size_t>(length));
    }
    else if (length >= 0)
    {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

} // namespace Zu
