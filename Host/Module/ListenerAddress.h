#pragma once

#include <string>

namespace ZuControl
{
class IControlInstance;
}

namespace ZuHost
{

/// Where a protocol listens, "127.0.0.1:1502", as its metrics tell under "listening"; waits for up to five seconds for one
/// that says so and does not listen yet. Empty for a protocol that does not say, or does not come to listen.
std::string WaitForListenerAddress(ZuControl::IControlInstance& instance);

} // namespace ZuHost
