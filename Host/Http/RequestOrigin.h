#pragma once

#include <string_view>

/// Where a request comes from, as far as its headers tell.
///
/// A service that listens on this machine alone trusts who can reach it, and a browser can: on behalf of any page that it
/// shows. A page from elsewhere gives itself away by the header Origin, or, when its name has been made to point here, by
/// Host.
namespace ZuHost::RequestOrigin
{

/// Whether the value of the header Host ("localhost:8080", "127.0.0.1", "[::1]:80") names this machine by a name or address
/// that can mean no other.
bool IsThisMachine(std::string_view host);

/// Whether the value of the header Origin ("http://localhost:8080") is that of pages of this service itself, which the client
/// calls `host`.
bool IsOwn(std::string_view origin, std::string_view host);

} // namespace ZuHost::RequestOrigin
