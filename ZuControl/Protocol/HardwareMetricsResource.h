#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlMetricsResourceBase.h"

namespace ZuControl::Protocol
{

/// The metrics of the inputs and outputs. They are looked up like those of a protocol with the type name "hardware":
/// while there is no such type, each request throws `Zu::Status::NOT_FOUND`.
class ZUCONTROL_INTERNAL_API HardwareMetricsResource final : public ControlMetricsResourceBase
{
public:
    explicit HardwareMetricsResource(ControlMetrics& usedMetrics);
    ~HardwareMetricsResource() override;
};

} // namespace ZuControl::Protocol
