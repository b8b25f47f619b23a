#include "Host/Sensor/DeskMetrics.h"

#include <utility>

namespace ZuHost
{

DeskMetrics::DeskMetrics()
{
    networkInterfaces.Register("linkStatus", linkStatus);
    networkInterfaces.Register("linkCapacity", linkCapacity);
    metrics.Register("upTime", upTime);
    metrics.Register("appUpTime", appUpTime);
    metrics.Register("networkIfs", networkInterfaces);
}

DeskMetrics::~DeskMetrics() = default;

Zu::Properties::Structure const& DeskMetrics::GetMetrics() const
{
    return metrics;
}

void DeskMetrics::Restart() noexcept
{
    upTime.Restart();
    appUpTime.Restart();
}

DeskMetricsReporter::DeskMetricsReporter(uint64 newPeriodUsec)
    : periodUsec(newPeriodUsec), timer([this](Zu::AsyncTimer&) { Report(); })
{
}

DeskMetricsReporter::~DeskMetricsReporter() = default;

ZuCommon::IMetricsSource const& DeskMetricsReporter::LastReport()
{
    return metrics;
}

DeskMetricsReporter::CallbackId DeskMetricsReporter::AddReportHandler(ReportHandler handler)
{
    CallbackId const id = reported.Add(std::move(handler));
    if (id.second && !isStarted.exchange(true))
    {
        timer.Start(periodUsec, false);
    }
    return id;
}

void DeskMetricsReporter::RemoveReportHandler(CallbackId id)
{
    reported.Remove(id); // the timer keeps running: a tick without handlers is cheap
}

DeskMetrics& DeskMetricsReporter::Metrics()
{
    return metrics;
}

void DeskMetricsReporter::Report()
{
    reported.Fire(metrics);
}

} // namespace ZuHost
