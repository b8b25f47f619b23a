#pragma once

#include "ZuControl/Export.h"

#include <string>

namespace ZuRest
{
struct RequestInfo;
}

namespace ZuControl::Protocol
{

/// The value of a key of the route, which is the request's; std::out_of_range when it has none, in words that clients of the
/// outputs know.
ZUCONTROL_INTERNAL_API std::string const& RouteKey(ZuRest::RequestInfo const& request, char const* key);

} // namespace ZuControl::Protocol
