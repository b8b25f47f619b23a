#include "Plugins/ModbusTcp/ModbusMetrics.h"

#include "Plugins/ModbusTcp/ModbusTotals.h"

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
    Register("registersWritten", registersWritten);
    Register("lastHandlingUsec", lastHandlingUsec);
    Register("largestHandlingUsec", largestHandlingUsec);
    Register("lifetime", lifetime);
}

ModbusMetrics::~ModbusMetrics() = default;

void ModbusMetrics::Show(ModbusTotals const& counted)
{
    controlDrops.Set(counted.controlDrops);
    acceptedClients.Set(counted.acceptedClients);
    rejectedClients.Set(counted.rejectedClients);
    droppedClients.Set(counted.droppedClients);
    requests.Set(counted.requests);
    exceptions.illegalFunctions.Set(counted.illegalFunctions);
    exceptions.illegalAddresses.Set(counted.illegalAddresses);
    exceptions.illegalValues.Set(counted.illegalValues);
    exceptions.busyRefusals.Set(counted.busyRefusals);
    bytesIn.Set(counted.bytesIn);
    bytesOut.Set(counted.bytesOut);
    resultSets.Set(counted.resultSets);
    commands.Set(counted.commands);
    registersWritten.Set(counted.registersWritten);
}

} // namespace ModbusTcp
