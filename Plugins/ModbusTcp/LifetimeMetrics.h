#pragma once

#include "Plugins/ModbusTcp/ModbusTotals.h"
#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Structure.h"

namespace ModbusTcp
{

/// The part of the metrics that counts from the first start of the system on and is kept over restarts. One thread at a time
/// shows and loads it, any may read.
class LifetimeMetrics final : public Zu::Properties::Structure
{
public:
    LifetimeMetrics();
    ~LifetimeMetrics() override;

    LifetimeMetrics(LifetimeMetrics const&) = delete;
    LifetimeMetrics& operator=(LifetimeMetrics const&) = delete;

    /// Shows what was loaded and all that has been counted since.
    void Show(ModbusTotals const& counted);

    /// The numbers that stand here were loaded when so much had been counted.
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

    ModbusTotals before; // behind a later start less than nothing, in the arithmetic of unsigned numbers
};

} // namespace ModbusTcp
