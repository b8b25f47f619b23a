#include "Plugins/ModbusTcp/ModbusMetrics.h"

namespace ModbusTcp
{

ModbusMetrics::ModbusMetrics() : Structure(true)
{
    Register("controlDrops", controlDrops);
    Register("listening", listening);
    Register("clients", clients);
    Register("acceptedClients", acceptedClients);
    Register("rejectedClients", rejectedClients);
    Register("droppedClients", droppedClients);
    Register("requests", requests);
    Register("exceptions", exceptions);
    Register("bytesIn", bytesIn);
    Register("bytesOut", bytesOut);
    Register("resultSets", resultSets);
    Register("commands", commands);
}

ModbusMetrics::~ModbusMetrics() = default;

} // namespace ModbusTcp
