#pragma once

#include "wApi/wTypes.h"

#include <array>

/// The IPv4 configuration of a network interface. The empty configuration is all zeros.
struct wIpConfig
{
    using Address = std::array<uint8, 4>; ///< in written order: 192, 168, 1, 10

    Address address{};
    Address mask{};
    Address gateway{};
    bool dhcp = false; ///< the interface takes its addresses from a DHCP server

    bool operator==(wIpConfig const&) const = default;
};
