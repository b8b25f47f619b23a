#pragma once

#include "wApi/wTypes.h"

#include <array>

/// How an interface gets at its address. All zero is the empty configuration.
struct wIpConfig
{
    using Address = std::array<uint8, 4>; ///< in the order in which it is written: 192, 168, 1, 10

    Address address{};
    Address mask{};
    Address gateway{};
    bool dhcp = false; ///< the network gives the addresses

    bool operator==(wIpConfig const&) const = default;
};
