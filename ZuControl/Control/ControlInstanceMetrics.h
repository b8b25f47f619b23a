#pragma once

#include "ZuCommon/Metrics.h"
#include "ZuControl/Export.h"

namespace ZuControl
{

class ProtocolFaults;

namespace ControlProtocol
{
class IProtocol;
}

/// Access to the metrics of a protocol. The object may outlive the protocol; without a protocol each operation throws
/// `Zu::Status::WRONG_STATE`.
class ZUCONTROL_API ControlInstanceMetrics final : public ZuCommon::IMetricsKeeper, public ZuCommon::IMetricsSource
{
public:
    ControlInstanceMetrics();
    ~ControlInstanceMetrics() override;

    ControlInstanceMetrics(ControlInstanceMetrics const&) = delete;
    ControlInstanceMetrics& operator=(ControlInstanceMetrics const&) = delete;

    /// `newProtocol` is not owned; the caller clears it before the protocol is destroyed.
    void BindProtocol(ControlProtocol::IProtocol* newProtocol);
    void ClearProtocol();

    /// From now on a failed read of the record counts as a fault in `protocolFaults`, which outlives this object.
    void BindFaults(ProtocolFaults& protocolFaults);

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;
    Zu::Properties::Structure const& GetMetrics() const override;

private:
    ControlProtocol::IProtocol* protocol = nullptr;
    ProtocolFaults* faults = nullptr;
};

} // namespace ZuControl
