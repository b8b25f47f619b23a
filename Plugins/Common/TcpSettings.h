#pragma once

#include "wApi/wTypes.h"

#include <string>

namespace PluginCommon
{

/// The address and the limits of a server.
struct TcpSettings
{
    std::string address;        ///< a numeric IPv4 or IPv6 address of this machine
    uint16 port = 0;            ///< 0: a free port
    uint64 maxClients = 0;      ///< a further client is accepted and closed at once
    uint64 idleTimeoutUsec = 0; ///< a client that is silent for longer is dropped

    bool HasSamePlace(TcpSettings const& other) const
    {
        return port == other.port && address == other.address;
    }
};

} // namespace PluginCommon
