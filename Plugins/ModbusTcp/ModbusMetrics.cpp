#include "Plugins/ModbusTcp/ModbusMetrics.h"

namespace ModbusTcp
{

void ModbusCounters::CountException(ModbusException refusal)
{
    if (refusal != ModbusException::NONE)
    {
        Count(exceptions);
        Count(exceptionsByCode.at(static_cast<std::size_t>(refusal)));
    }
}

ExceptionMetrics::ExceptionMetrics(ModbusCounters const& counters)
{
    RegisterSchema("label", label);
    for (auto const code : {ModbusException::ILLEGAL_FUNCTION, ModbusException::ILLEGAL_DATA_ADDRESS,
                            ModbusException::ILLEGAL_DATA_VALUE, ModbusException::SERVER_DEVICE_BUSY})
    {
        AddCounter(std::to_string(static_cast<unsigned>(code)), "Requests refused, by the code of the exception",
                   counters.exceptionsByCode.at(static_cast<std::size_t>(code)));
    }
}

ExceptionMetrics::~ExceptionMetrics()
{
    DeregisterSchema("label"); // before the member, to which the base class refers, is destroyed
}

LifetimeMetrics::LifetimeMetrics(ModbusCounters const& counters)
{
    AddCounter("acceptedClients", "Clients accepted since the first start", counters.acceptedClients);
    AddCounter("requests", "Requests since the first start", counters.requests);
    AddCounter("exceptions", "Requests refused since the first start", counters.exceptions);
    AddCounter("bytesIn", "Bytes received since the first start", counters.bytesIn);
    AddCounter("bytesOut", "Bytes sent since the first start", counters.bytesOut);
    AddCounter("resultSets", "Result sets taken since the first start", counters.resultSets);
    AddCounter("commands", "Commands taken since the first start", counters.commands);
    AddCounter("registersWritten", "Registers written since the first start", counters.registersWritten);
}

LifetimeMetrics::~LifetimeMetrics() = default;

ModbusMetrics::ModbusMetrics(ModbusCounters const& counters)
    : TcpMetrics(counters), exceptions(counters), lifetime(counters)
{
    Register("exceptions", exceptions);
    AddTraffic(counters);
    AddCounter("commands", "Commands taken from the command block", counters.commands);
    AddCounter("registersWritten", "Registers written", counters.registersWritten);
    AddGauge("queuedResults", "Results in result queues now", counters.queuedResults);
    AddCounter("queueOverflows", "Results that a result queue has lost", counters.queueOverflows);
    AddHandling(counters);
    Register("lifetime", lifetime);
}

ModbusMetrics::~ModbusMetrics() = default;

void ModbusMetrics::Show()
{
    TcpMetrics::Show();
    exceptions.Show();
    lifetime.Show();
}

void ModbusMetrics::Reset()
{
    TcpMetrics::Reset();
    exceptions.Reset();
}

} // namespace ModbusTcp
