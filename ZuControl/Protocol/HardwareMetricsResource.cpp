#include "ZuControl/Protocol/HardwareMetricsResource.h"

namespace ZuControl::Protocol
{

HardwareMetricsResource::HardwareMetricsResource(ControlMetrics& usedMetrics)
    : ControlMetricsResourceBase(usedMetrics, "hardware")
{
}

HardwareMetricsResource::~HardwareMetricsResource() = default;

} // namespace ZuControl::Protocol
