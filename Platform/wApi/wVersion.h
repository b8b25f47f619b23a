#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <compare>

/// A version of four numbers, the first the most significant.
struct wVersion
{
    uint16 major = 0;
    uint16 minor = 0;
    uint16 release = 0;
    uint16 build = 0;

    auto operator<=>(wVersion const&) const = default;
};

/// Reads "1.0.0.0": four decimal numbers up to 65535, nothing before, between or behind but the dots. -984, and `*version`
/// is left alone, for any other text; -997 for null.
ZUAPI_API wStatus wVersion_Parse(wVersion* version, char const* text);
