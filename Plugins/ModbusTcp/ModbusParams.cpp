#include "Plugins/ModbusTcp/ModbusParams.h"

#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"

ZU_INSTANTIATE_ENUM_VALUE(ModbusTcp::RegisterOrder);

namespace ModbusTcp
{

ModbusParams::ModbusParams() : TcpParams(DEFAULT_PORT)
{
    Register("registerOrder", "Register Order", registerOrder);
    registerOrder.AddOption(RegisterOrderBigEndian, "Big Endian");
    registerOrder.AddOption(RegisterOrderLittleEndian, "Little Endian");
    registerOrder.AddOption(RegisterOrderBigEndianSwapped, "Big Endian, Bytes Swapped");
    registerOrder.AddOption(RegisterOrderLittleEndianSwapped, "Little Endian, Bytes Swapped");
    RegisterLimits();
    Register("queueDepth", "Depth of a Result Queue", queueDepth);
    queueDepth.SetMinimum(1);
    queueDepth.EnableMaximum(true).GetMaximum().Set(ResultQueueBlock::MOST_RESULTS);
    ModbusParams::SetDefaults();
}

ModbusParams::~ModbusParams()
{
    for (char const* key : {"registerOrder", "queueDepth"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void ModbusParams::SetDefaults()
{
    TcpParams::SetDefaults();
    registerOrder.Set(RegisterOrderBigEndian);
    queueDepth.Set(ResultQueueBlock::DEFAULT_DEPTH);
}

} // namespace ModbusTcp
