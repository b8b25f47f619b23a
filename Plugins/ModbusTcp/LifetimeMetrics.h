#pragma once

#include "Plugins/ModbusTcp/ModbusTotals.h"
#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Structure.h"

namespace ModbusTcp
{

/// The metrics that are saved and count since the first start of the system. One thread at a time calls the operations;
/// any thread may read the numbers.
class LifetimeMetrics final : public Zu::Properties::Structure
{
public:
    LifetimeMetrics();
    ~LifetimeMetrics() override;

    LifetimeMetrics(LifetimeMetrics const&) = delete;
    LifetimeMetrics& operator=(LifetimeMetrics const&) = delete;

    /// Sets the numbers to the loaded ones plus all counted since.
    void Show(ModbusTotals const& counted);

    /// Call it after loading the numbers; `counted` are the counters at that moment.
    void Loaded(ModbusTotals const& counted);

    using Metric = Zu::Properties::Metric;

    Metric acceptedClients{Metric::Kind::COUNTER, "Clients accepted since the first start"};
    Metric requests{Metric::Kind::COUNTER, "Requests since the first start"};
    Metric exceptions{Metric::Kind::COUNTER, "Requests refused since the first start"};
    Metric bytesIn{Metric::Kind::COUNTER, "Bytes received since the first start"};
    Metric bytesOut{Metric::Kind::COUNTER, "Bytes sent since the first start"};
    Metric resultSets{Metric::Kind::COUNTER, "Result sets taken since the first start"};
    Metric commands{Metric::Kind::COUNTER, "Commands taken since the first start"};
    Metric registersWritten{Metric::Kind::COUNTER, "Registers written since the first start"};

private:
    template <typename Step>
    void ForEach(Step const& step);

    ModbusTotals before; // loaded numbers minus the counters then; wraps around if negative
};

} // namespace ModbusTcp
