#pragma once

#include <string>
#include <vector>

namespace ZuHost
{

/// The names and IP addresses by which clients may call this machine: its host name, "localhost", the addresses of its
/// network interfaces and `listenerAddress`. Addresses that mean every address or that need the name of an interface are
/// left out. The host name comes first, or "localhost" if the machine has none.
std::vector<std::string> MachineNames(std::string const& listenerAddress);

} // namespace ZuHost
