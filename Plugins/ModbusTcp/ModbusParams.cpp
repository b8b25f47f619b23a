#include "Plugins/ModbusTcp/ModbusParams.h"

ZU_INSTANTIATE_ENUM_VALUE(ModbusTcp::RegisterOrder);

namespace ModbusTcp
{

namespace
{

void Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
}

} // namespace

ModbusParams::ModbusParams() : Group("")
{
    Register("port", "TCP Port", port);
    Register("address", "IP Address", address);
    Register("maxClients", "Maximum Number of Clients", maxClients);
    Register("registerOrder", "Register Order", registerOrder);
    Register("idleTimeout", "Idle Timeout", idleTimeout);
    Bound(maxClients, 1, MOST_CLIENTS);
    Bound(idleTimeout, 1, LONGEST_IDLE_TIMEOUT);
    idleTimeout.EnableUnits(true).GetUnits().Set("s");
    registerOrder.AddOption(RegisterOrderBigEndian, "Big Endian");
    registerOrder.AddOption(RegisterOrderLittleEndian, "Little Endian");
    SetDefaults();
}

ModbusParams::~ModbusParams()
{
    for (char const* key : {"port", "address", "maxClients", "registerOrder", "idleTimeout"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void ModbusParams::SetDefaults()
{
    port.Set(DEFAULT_PORT);
    address.Set(DEFAULT_ADDRESS);
    maxClients.Set(DEFAULT_MAX_CLIENTS);
    registerOrder.Set(RegisterOrderBigEndian);
    idleTimeout.Set(DEFAULT_IDLE_TIMEOUT);
}

} // namespace ModbusTcp
