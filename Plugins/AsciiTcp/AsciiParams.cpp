#include "Plugins/AsciiTcp/AsciiParams.h"

#include "Plugins/AsciiTcp/AsciiText.h"

namespace AsciiTcp
{

namespace
{

void Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
}

} // namespace

AsciiParams::AsciiParams() : Group("")
{
    Register("port", "TCP Port", port);
    Register("address", "IP Address", address);
    Register("maxClients", "Maximum Number of Clients", maxClients);
    Register("decimals", "Digits Behind the Point", decimals);
    Register("idleTimeout", "Idle Timeout", idleTimeout);
    Bound(maxClients, 1, MOST_CLIENTS);
    Bound(decimals, 0, MOST_DECIMALS);
    Bound(idleTimeout, 1, LONGEST_IDLE_TIMEOUT);
    idleTimeout.EnableUnits(true).GetUnits().Set("s");
    SetDefaults();
}

AsciiParams::~AsciiParams()
{
    for (char const* key : {"port", "address", "maxClients", "decimals", "idleTimeout"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void AsciiParams::SetDefaults()
{
    port.Set(DEFAULT_PORT);
    address.Set(DEFAULT_ADDRESS);
    maxClients.Set(DEFAULT_MAX_CLIENTS);
    decimals.Set(DEFAULT_DECIMALS);
    idleTimeout.Set(DEFAULT_IDLE_TIMEOUT);
}

} // namespace AsciiTcp
