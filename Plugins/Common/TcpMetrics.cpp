#include "Plugins/Common/TcpMetrics.h"

namespace PluginCommon
{

void TcpCounters::NoteHandling(uint64 usec)
{
    lastHandlingUsec.store(usec, std::memory_order_relaxed);
    if (usec > largestHandlingUsec.load(std::memory_order_relaxed))
    {
        largestHandlingUsec.store(usec, std::memory_order_relaxed); // a concurrent reset may be lost
    }
}

CounterMetrics::CounterMetrics() : Structure(true)
{
}

CounterMetrics::~CounterMetrics() = default;

void CounterMetrics::AddCounter(std::string const& key, char const* title, Counter const& counter)
{
    Register(key, rows.emplace_back(Metric::Kind::COUNTER, title, counter).metric);
}

void CounterMetrics::AddGauge(std::string const& key, char const* title, Counter const& gauge)
{
    Register(key, rows.emplace_back(Metric::Kind::GAUGE, title, gauge).metric);
}

void CounterMetrics::Show()
{
    for (Row& row : rows)
    {
        row.metric.Set(row.counter.load(std::memory_order_relaxed) - row.zero);
    }
}

void CounterMetrics::Reset()
{
    for (Row& row : rows)
    {
        row.zero = row.isGauge ? 0 : row.counter.load(std::memory_order_relaxed);
    }
}

void CounterMetrics::Resume()
{
    for (Row& row : rows)
    {
        row.zero = row.isGauge ? 0 : row.counter.load(std::memory_order_relaxed) - row.metric.Get();
    }
}

CounterMetrics::Row::Row(Metric::Kind kind, char const* title, Counter const& shownCounter)
    : metric(kind, title), counter(shownCounter), isGauge(kind == Metric::Kind::GAUGE)
{
}

TcpMetrics::TcpMetrics(TcpCounters const& counters)
{
    AddCounter("controlDrops", "Results lost on the way to clients", counters.controlDrops);
    Register("listening", listening);
    AddGauge("clients", "Clients connected now", counters.clients);
    AddCounter("acceptedClients", "Clients accepted", counters.acceptedClients);
    AddCounter("rejectedClients", "Clients closed at once, beyond the largest number of clients",
               counters.rejectedClients);
    AddCounter("deniedClients", "Clients closed because they may not connect", counters.deniedClients);
    AddCounter("failedHandshakes", "Clients closed because the TLS handshake failed", counters.failedHandshakes);
    AddCounter("droppedClients", "Clients closed by the service", counters.droppedClients);
    AddCounter("requests", "Requests answered", counters.requests);
    AddCounter("deniedRequests", "Requests refused because of the client's role", counters.deniedRequests);
}

TcpMetrics::~TcpMetrics() = default;

void TcpMetrics::AddTraffic(TcpCounters const& counters)
{
    AddCounter("bytesIn", "Bytes received", counters.bytesIn);
    AddCounter("bytesOut", "Bytes sent", counters.bytesOut);
    AddCounter("resultSets", "Result sets taken", counters.resultSets);
}

void TcpMetrics::AddHandling(TcpCounters const& counters)
{
    AddGauge("lastHandlingUsec", "Time from the last request to its answer", counters.lastHandlingUsec);
    AddGauge("largestHandlingUsec", "Longest time from a request to its answer", counters.largestHandlingUsec);
}

} // namespace PluginCommon
