#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <compare>

/// A version of four numbers, the most significant first.
struct wVersion
{
    uint16 major = 0;
    uint16 minor = 0;
    uint16 release = 0;
    uint16 build = 0;

    auto operator<=>(wVersion const&) const = default;
};

/// Parses a version such as "1.0.0.0": exactly four decimal numbers up to 65535, separated by dots. For any other text
/// returns `Zu::Status::BAD_FORMAT` and leaves `*version` unchanged. Returns `Zu::Status::BAD_ARGUMENT` for null.
ZUAPI_API wStatus wVersion_Parse(wVersion* version, char const* text);
