#include "Plugins/Common/TcpParams.h"

#include <algorithm>

namespace PluginCommon
{

namespace
{

constexpr uint64 USEC_PER_SECOND = 1'000'000;

} // namespace

TcpParams::TcpParams(uint16 newDefaultPort) : Group(""), defaultPort(newDefaultPort)
{
    Register("port", "TCP Port", port);
    Register("address", "IP Address", address);
    Register("maxClients", "Maximum Number of Clients", maxClients);
    Bound(maxClients, 1, MOST_CLIENTS);
    TcpParams::SetDefaults();
}

TcpParams::~TcpParams()
{
    for (char const* key : {"port", "address", "maxClients", "idleTimeout"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void TcpParams::SetDefaults()
{
    port.Set(defaultPort);
    address.Set(DEFAULT_ADDRESS);
    maxClients.Set(DEFAULT_MAX_CLIENTS);
    idleTimeout.Set(DEFAULT_IDLE_TIMEOUT);
}

TcpSettings TcpParams::Settings() const
{
    return {address.Get(), port.Get(), std::min(maxClients.Get(), MOST_CLIENTS),
            USEC_PER_SECOND * std::clamp<uint64>(idleTimeout.Get(), 1, LONGEST_IDLE_TIMEOUT)};
}

void TcpParams::RegisterLimits()
{
    Register("idleTimeout", "Idle Timeout", idleTimeout);
    Bound(idleTimeout, 1, LONGEST_IDLE_TIMEOUT);
    idleTimeout.EnableUnits(true).GetUnits().Set("s");
}

void TcpParams::Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
}

} // namespace PluginCommon
