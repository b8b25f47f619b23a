#include "wApi/wVersion.h"

#include "wApi/wTypes.h"

#include <charconv>
#include <cstring>
#include <initializer_list>

wStatus wVersion_Parse(wVersion* version, char const* text)
{
    if (version == nullptr || text == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    wVersion parsed;
    char const* position = text;
    char const* const end = text + std::strlen(text);
    for (uint16* const number : {&parsed.major, &parsed.minor, &parsed.release, &parsed.build})
    {
        if (number != &parsed.major)
        {
            if (position == end || *position != '.')
            {
                return Zu::Status::BAD_FORMAT;
            }
            ++position;
        }
        auto const result = std::from_chars(position, end, *number);
        if (result.ec != std::errc{})
        {
            return Zu::Status::BAD_FORMAT;
        }
        position = result.ptr;
    }
    if (position != end)
    {
        return Zu::Status::BAD_FORMAT;
    }
    *version = parsed;
    return Zu::Status::SUCCESS;
}
