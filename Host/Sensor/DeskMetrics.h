#pragma once

#include "Host/Sensor/NumberListValue.h"
#include "Host/Sensor/UpTimeValue.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/IMetricsSource.h"

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

} // namespace ZuHost
