#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string>

/// Times in documents: seconds since 1970 in UTC, as in RFC 3339: "2026-01-31T23:59:59Z".
namespace ZuHost::UtcTime
{

/// The present time of the machine's clock.
int64 Now();

std::string Text(int64 seconds);

/// The same with milliseconds, of a time in microseconds since 1970: "2026-01-31T23:59:59.999Z".
std::string TextWithMilliseconds(uint64 usec);

/// The present time of the machine's clock, in microseconds since 1970.
uint64 NowUsec();

/// Returns nothing for a text of another form and for a day or hour that does not exist.
std::optional<int64> Parse(std::string const& text);

} // namespace ZuHost::UtcTime
