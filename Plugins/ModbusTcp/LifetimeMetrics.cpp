#include "Plugins/ModbusTcp/LifetimeMetrics.h"

namespace ModbusTcp
{

LifetimeMetrics::LifetimeMetrics() : Structure(true)
{
    Register("acceptedClients", acceptedClients);
    Register("requests", requests);
    Register("exceptions", exceptions);
    Register("bytesIn", bytesIn);
    Register("bytesOut", bytesOut);
    Register("resultSets", resultSets);
    Register("commands", commands);
    Register("registersWritten", registersWritten);
}

LifetimeMetrics::~LifetimeMetrics() = default;

void LifetimeMetrics::Show(ModbusTotals const& counted)
{
    ForEach([&](Metric& metric, auto const member) { metric.Set(before.*member + counted.*member); });
}

void LifetimeMetrics::Loaded(ModbusTotals const& counted)
{
    ForEach([&](Metric& metric, auto const member) { before.*member = metric.Get() - counted.*member; });
}

template <typename Step>
void LifetimeMetrics::ForEach(Step const& step)
{
    step(acceptedClients, &ModbusTotals::acceptedClients);
    step(requests, &ModbusTotals::requests);
    step(exceptions, &ModbusTotals::exceptions);
    step(bytesIn, &ModbusTotals::bytesIn);
    step(bytesOut, &ModbusTotals::bytesOut);
    step(resultSets, &ModbusTotals::resultSets);
    step(commands, &ModbusTotals::commands);
    step(registersWritten, &ModbusTotals::registersWritten);
}

} // namespace ModbusTcp
