#pragma once

#include "ZuControl/Export.h"

#include <string>

namespace ZuRest
{
struct RequestInfo;
}

namespace ZuControl::Protocol
{

/// The value of a key of the route, which stays the request's. Throws std::out_of_range when the request has none, with
/// a text that clients of the outputs rely on.
ZUCONTROL_INTERNAL_API std::string const& RouteKey(ZuRest::RequestInfo const& request, char const* key);

} // namespace ZuControl::Protocol
