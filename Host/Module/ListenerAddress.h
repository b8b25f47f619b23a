#pragma once

#include <string>

namespace ZuRest
{
class RequestProcessor;
}

namespace ZuHost
{

/// Where the protocol of a type listens, "127.0.0.1:1502", as its metrics tell under "listening"; waits for up to five seconds
/// for one that says so and does not listen yet. Empty for a protocol that does not say, or does not come to listen.
///
/// It asks `resources`, as any client would: there nobody reads a record that is being written.
std::string WaitForListenerAddress(ZuRest::RequestProcessor& resources, std::string const& typeName);

} // namespace ZuHost
