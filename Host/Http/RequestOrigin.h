#pragma once

#include <string_view>

/// Tells from the headers of a request whether a foreign page sends it.
///
/// A service that listens on this machine alone trusts its clients. A browser is one of them, and sends requests for
/// any page that it shows. The header Origin names the page. If a foreign site lets its host name resolve to this
/// machine, the header Host still shows the foreign name.
namespace ZuHost::RequestOrigin
{

/// Whether the value of the header Host ("localhost:8080", "127.0.0.1", "[::1]:80") is a name or address that means
/// this machine everywhere.
bool IsThisMachine(std::string_view host);

/// Whether the value of the header Origin ("http://localhost:8080", or https if `isEncrypted`) is that of a page of this
/// service, where the client knows the service as `host`.
bool IsOwn(std::string_view origin, std::string_view host, bool isEncrypted);

} // namespace ZuHost::RequestOrigin
