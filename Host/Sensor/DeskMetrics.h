#pragma once

#include "Host/Sensor/ShownValues.h"
#include "ZuApi/AsyncTimer.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Metrics.h"

#include <atomic>

namespace ZuHost
{

/// The metrics of the simulated sensor: up-times in seconds, and one network interface that is always linked at one
/// gigabit per second. The record is never written, so any thread may read it at any time.
class DeskMetrics final : public ZuCommon::IMetricsSource
{
public:
    DeskMetrics();
    ~DeskMetrics() override;

    Zu::Properties::Structure const& GetMetrics() const override;

    /// Restarts both up-times, as a restart of the device does. Thread-safe.
    void Restart() noexcept;

private:
    UpTimeValue upTime;
    UpTimeValue appUpTime;
    NumberListValue linkStatus{{1}};
    NumberListValue linkCapacity{{1'000'000'000}};
    Zu::Properties::Structure networkInterfaces{true};
    Zu::Properties::Structure metrics{true};
};

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

    Zu::Event<ZuCommon::IMetricsSource const&> reported;
    std::atomic<bool> isStarted{false}; // publishes nothing
    Zu::AsyncTimer timer;               // last: its callback uses all members above
};

} // namespace ZuHost
