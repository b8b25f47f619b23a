#pragma once

#include <string>

namespace ZuRest
{
class RequestProcessor;
}

namespace ZuHost
{

/// Returns the address on which a protocol listens, such as "127.0.0.1:1502", from "listening" in its metrics. If the
/// protocol has this member but does not listen yet, waits up to five seconds. Returns an empty text for a protocol
/// that has no such member or does not listen in time.
///
/// Reads the metrics through `resources`, which never reads a record while it is being written.
std::string WaitForListenerAddress(ZuRest::RequestProcessor& resources, std::string const& typeName);

} // namespace ZuHost
