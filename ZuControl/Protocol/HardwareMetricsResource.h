#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlMetricsResourceBase.h"

namespace ZuControl::Protocol
{

/// The metrics of the inputs and outputs. They are looked up like those of a protocol of the type name "hardware": as long as
/// nothing goes by that name, each request is refused with -999.
class ZUCONTROL_INTERNAL_API HardwareMetricsResource final : public ControlMetricsResourceBase
{
public:
    explicit HardwareMetricsResource(ControlMetrics& usedMetrics);
    ~HardwareMetricsResource() override;
};

} // namespace ZuControl::Protocol
