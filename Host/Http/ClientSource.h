#pragma once

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/ip/address.hpp>

namespace ZuHost
{

/// Returns the address that stands for one client in limits: of IPv6 only the network, since a machine has as many
/// addresses in it as it wants.
boost::asio::ip::address ClientSource(boost::asio::ip::address const& address);

} // namespace ZuHost
