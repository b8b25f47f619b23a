#pragma once

#include "Host/Sensor/DeskMetrics.h"
#include "ZuApi/AsyncTimer.h"
#include "ZuCommon/IMetricsReporter.h"
#include "wApi/wMutex.h"

namespace ZuHost
{

/// Reports the metrics of the simulated sensor once a second, beginning with the first handler.
///
/// Any thread may add and remove handlers. A removal waits for a report that runs on another thread, so the caller must
/// not hold a lock that the handler takes.
class DeskMetricsReporter final : public ZuCommon::IMetricsReporter<>
{
public:
    static constexpr uint64 DEFAULT_PERIOD_USEC = 1'000'000;

    explicit DeskMetricsReporter(uint64 newPeriodUsec = DEFAULT_PERIOD_USEC);
    ~DeskMetricsReporter() override;

    DeskMetricsReporter(DeskMetricsReporter const&) = delete;
    DeskMetricsReporter& operator=(DeskMetricsReporter const&) = delete;

    /// The record is always current.
    ZuCommon::IMetricsSource const& LastReport() override;
    CallbackId AddReportHandler(ReportHandler handler) override;
    void RemoveReportHandler(CallbackId id) override;

    DeskMetrics& Metrics();

private:
    void Report();

    uint64 const periodUsec;
    DeskMetrics metrics;

    Zu::RecursiveMutex lock; // held while handlers run
    Zu::Event<ZuCommon::IMetricsSource const&> reported ZU_GUARDED_BY(lock);
    Zu::AsyncTimer timer; // last: its callback uses all members above
};

} // namespace ZuHost
