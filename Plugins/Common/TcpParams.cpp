#include "Plugins/Common/TcpParams.h"

#include <algorithm>

namespace PluginCommon
{

namespace
{

uint64 UsecOf(uint32 seconds)
{
    constexpr uint64 USEC_PER_SECOND = 1'000'000;
    return USEC_PER_SECOND * std::clamp<uint32>(seconds, 1, TcpParams::LONGEST_IDLE_TIMEOUT);
}

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
    for (char const* key :
         {"port", "address", "maxClients", "idleTimeout", "makeRoomAfter", "allowedClients", "writers", "readOnly"})
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
    makeRoomAfter.Set(DEFAULT_MAKE_ROOM_AFTER);
    allowedClients.Set("");
    writers.Set("");
    readOnly.Set(false);
}

TcpSettings TcpParams::Settings() const
{
    return {.address = address.Get().substr(0, LONGEST_ADDRESS + 1),
            .port = port.Get(),
            .maxClients = std::min(maxClients.Get(), MOST_CLIENTS),
            .idleTimeoutUsec = UsecOf(idleTimeout.Get()),
            .makeRoomAfterUsec = UsecOf(makeRoomAfter.Get()),
            .allowedClients = allowedClients.Get(),
            .writers = writers.Get(),
            .isReadOnly = readOnly.Get()};
}

void TcpParams::RegisterLimits()
{
    RegisterTime("idleTimeout", "Idle Timeout", idleTimeout);
    RegisterTime("makeRoomAfter", "Idle Time Until a Client Makes Room", makeRoomAfter);
    Register("allowedClients", "Networks That May Connect", allowedClients);
    Register("writers", "Networks That May Write", writers);
    Register("readOnly", "Read Only", readOnly);
}

void TcpParams::RegisterTime(char const* key, char const* title, Zu::Params::Value<uint32>& value)
{
    Register(key, title, value);
    Bound(value, 1, LONGEST_IDLE_TIMEOUT);
    value.EnableUnits(true).GetUnits().Set("s");
}

void TcpParams::Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
}

} // namespace PluginCommon
