#include "Host/Sensor/DeskMetricsReporter.h"

#include "wApi/wMutex.h"

namespace ZuHost
{

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
