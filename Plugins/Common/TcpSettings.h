#pragma once

#include "wApi/wTypes.h"

#include <string>

namespace PluginCommon
{

/// Where a server listens and whom it serves.
struct TcpSettings
{
    std::string address;        ///< of this machine, as a number: IPv4 or IPv6
    uint16 port = 0;            ///< 0 takes a free one
    uint64 maxClients = 0;      ///< one more is accepted and closed at once
    uint64 idleTimeoutUsec = 0; ///< a client that is silent for so long is dropped

    bool HasSamePlace(TcpSettings const& other) const
    {
        return port == other.port && address == other.address;
    }
};

} // namespace PluginCommon
