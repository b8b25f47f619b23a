#include "Host/Sensor/DeskMetrics.h"

#include "wApi/wMutex.h"

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
    CallbackId id;
    bool isFirst = false;
    {
        Zu::MutexLock const guard(lock);
        bool const wasEmpty = reported.Empty();
        id = reported.Add(std::move(handler));
        isFirst = wasEmpty && !reported.Empty();
    }
    if (isFirst)
    {
        timer.Start(periodUsec, false);
    }
    return id;
}

void DeskMetricsReporter::RemoveReportHandler(CallbackId id)
{
    // The timer keeps running: stopping it here would race with a handler that is being added, and a tick without
    // handlers is cheap.
    Zu::MutexLock const guard(lock);
    reported.Remove(id);
}

DeskMetrics& DeskMetricsReporter::Metrics()
{
    return metrics;
}

void DeskMetricsReporter::Report()
{
    Zu::MutexLock const guard(lock);
    reported.Fire(metrics);
}

} // namespace ZuHost
