#pragma once

#include "Plugins/ModbusTcp/ExceptionMetrics.h"
#include "Plugins/ModbusTcp/LifetimeMetrics.h"
#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/SharedText.h"
#include "ZuApi/Structure.h"

namespace ModbusTcp
{

struct ModbusTotals;

/// The metrics of the service. Numbers count from the last reset, except those under "lifetime" and those with "now" in
/// their title. Any thread may read them during an update.
class ModbusMetrics final : public Zu::Properties::Structure
{
public:
    ModbusMetrics();
    ~ModbusMetrics() override;
    ModbusMetrics(ModbusMetrics const&) = delete;
    ModbusMetrics& operator=(ModbusMetrics const&) = delete;

    /// Sets the numbers to the counts since the last reset.
    void Show(ModbusTotals const& counted);

    using Metric = Zu::Properties::Metric;

    Metric controlDrops{Metric::Kind::COUNTER, "Results lost on the way to clients"};
    Zu::Properties::SharedText listening; ///< current address, such as "127.0.0.1:1502"; empty while stopped
    Metric clients{Metric::Kind::GAUGE, "Clients connected now"};
    Metric acceptedClients{Metric::Kind::COUNTER, "Clients accepted"};
    Metric rejectedClients{Metric::Kind::COUNTER, "Clients closed at once, beyond the largest number of clients"};
    Metric droppedClients{Metric::Kind::COUNTER, "Clients closed by the service"};
    Metric requests{Metric::Kind::COUNTER, "Requests answered"};
    ExceptionMetrics exceptions;
    Metric bytesIn{Metric::Kind::COUNTER, "Bytes received"};
    Metric bytesOut{Metric::Kind::COUNTER, "Bytes sent"};
    Metric resultSets{Metric::Kind::COUNTER, "Result sets taken"};
    Metric commands{Metric::Kind::COUNTER, "Commands taken from the command block"};
    Metric registersWritten{Metric::Kind::COUNTER, "Registers written"};
    Metric lastHandlingUsec{Metric::Kind::GAUGE, "Time from the last request to its answer"};
    Metric largestHandlingUsec{Metric::Kind::GAUGE, "Longest time from a request to its answer"};
    LifetimeMetrics lifetime;
};

} // namespace ModbusTcp
