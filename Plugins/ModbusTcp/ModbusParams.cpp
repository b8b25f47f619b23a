#include "Plugins/ModbusTcp/ModbusParams.h"

ZU_INSTANTIATE_ENUM_VALUE(ModbusTcp::RegisterOrder);

namespace ModbusTcp
{

ModbusParams::ModbusParams() : TcpParams(DEFAULT_PORT)
{
    Register("registerOrder", "Register Order", registerOrder);
    registerOrder.AddOption(RegisterOrderBigEndian, "Big Endian");
    registerOrder.AddOption(RegisterOrderLittleEndian, "Little Endian");
    RegisterLimits();
    ModbusParams::SetDefaults();
}

ModbusParams::~ModbusParams()
{
    Deregister("registerOrder"); // before the member, to which the base class refers, is destroyed
}

void ModbusParams::SetDefaults()
{
    TcpParams::SetDefaults();
    registerOrder.Set(RegisterOrderBigEndian);
}

} // namespace ModbusTcp
