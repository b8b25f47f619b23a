#include "Host/Sensor/DeskMetrics.h"

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

} // namespace ZuHost
