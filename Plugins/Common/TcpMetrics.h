#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/SharedText.h"
#include "ZuApi/Structure.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <deque>
#include <string>

namespace PluginCommon
{

/// The counters of every TCP service. They never go back; a reset of the metrics only moves the point from which the
/// metrics count.
///
/// Threads: any. The accesses are relaxed: no counter is used to conclude anything about another.
struct TcpCounters
{
    using Counter = std::atomic<uint64>;

    Counter controlDrops{0}; ///< results that a client did not get
    Counter clients{0};      ///< connected now
    Counter acceptedClients{0};
    Counter rejectedClients{0};  ///< accepted and closed at once, because maxClients were connected
    Counter failedHandshakes{0}; ///< closed because the TLS handshake failed
    Counter deniedClients{0};    ///< closed because they may not connect
    Counter droppedClients{0};   ///< closed by the server for a fault or for silence
    Counter requests{0};
    Counter deniedRequests{0}; ///< refused because of the client's role
    Counter bytesIn{0};
    Counter bytesOut{0};
    Counter resultSets{0};
    Counter lastHandlingUsec{0};
    Counter largestHandlingUsec{0}; ///< since the last reset

    /// Records the time from a request to its answer. Called on the I/O thread only.
    void NoteHandling(uint64 usec);
};

/// Adds `amount` to a counter.
inline void Count(TcpCounters::Counter& counter, uint64 amount = 1)
{
    counter.fetch_add(amount, std::memory_order_relaxed);
}

/// A metrics record that shows counters: the table of key, title and counter from which the record is built.
///
/// Threads: `Show`, `Reset` and `Resume` take turns; any thread may read the numbers meanwhile.
class CounterMetrics : public Zu::Properties::Structure
{
public:
    using Metric = Zu::Properties::Metric;
    using Counter = TcpCounters::Counter;

    CounterMetrics();
    ~CounterMetrics() override;
    CounterMetrics(CounterMetrics const&) = delete;
    CounterMetrics& operator=(CounterMetrics const&) = delete;

    /// Appends a number that counts from the last reset. The title is a literal; the counter outlives the record.
    void AddCounter(std::string const& key, char const* title, Counter const& counter);

    /// Appends a number that is shown as it is.
    void AddGauge(std::string const& key, char const* title, Counter const& gauge);

    /// Sets the numbers from the counters.
    virtual void Show();

    /// Counts from 0 from now on.
    virtual void Reset();

    /// Counts on from the numbers that the record has now. Call it after loading saved numbers.
    void Resume();

private:
    struct Row
    {
        Row(Metric::Kind kind, char const* title, Counter const& shownCounter);

        Metric metric;
        Counter const& counter;
        bool isGauge;
        uint64 zero = 0; // subtracted from the counter; wraps around if a loaded number is larger
    };

    std::deque<Row> rows; // a row never moves: the base class refers to its metric
};

/// The metrics of every TCP service. A service derives its own record from this one, and adds its rows in the order of
/// the document.
class TcpMetrics : public CounterMetrics
{
public:
    /// Begins the record: control drops, address, clients and requests.
    explicit TcpMetrics(TcpCounters const& counters);
    ~TcpMetrics() override;

    Zu::Properties::SharedText listening; ///< current address, such as "127.0.0.1:1502"; empty while stopped

protected:
    /// Adds the bytes in both directions and the result sets.
    void AddTraffic(TcpCounters const& counters);

    /// Adds the times of handling a request.
    void AddHandling(TcpCounters const& counters);
};

} // namespace PluginCommon
