#pragma once

#include "Host/Sensor/NumberListValue.h"
#include "Host/Sensor/UpTimeValue.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/IMetricsSource.h"

namespace ZuHost
{

/// The metrics of the sensor on the desk: up-times in seconds, and one network interface, always linked, of a gigabit a
/// second. Nothing in it is ever written, so that any thread may read it at any time.
class DeskMetrics final : public ZuCommon::IMetricsSource
{
public:
    DeskMetrics();
    ~DeskMetrics() override;

    Zu::Properties::Structure const& GetMetrics() const override;

    /// The device restarts: both up-times begin anew. Any thread.
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
