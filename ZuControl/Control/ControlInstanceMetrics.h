#pragma once

#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuControl/Export.h"

namespace ZuControl
{

class ProtocolFaults;

namespace ControlProtocol
{
class IProtocol;
}

/// A protocol's metrics as others reach them: they outlast the protocol, and answer -1000 without one.
class ZUCONTROL_API ControlInstanceMetrics final : public ZuCommon::IMetricsKeeper, public ZuCommon::IMetricsSource
{
public:
    ControlInstanceMetrics();
    ~ControlInstanceMetrics() override;

    ControlInstanceMetrics(ControlInstanceMetrics const&) = delete;
    ControlInstanceMetrics& operator=(ControlInstanceMetrics const&) = delete;

    /// `newProtocol` is not owned; whoever binds it clears it before it goes.
    void BindProtocol(ControlProtocol::IProtocol* newProtocol);
    void ClearProtocol();

    /// A metrics record that cannot be read counts as a fault here from now on. `protocolFaults` outlives this object.
    void BindFaults(ProtocolFaults& protocolFaults);

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;
    Zu::Properties::Structure const& GetMetrics() const override;

private:
    ControlProtocol::IProtocol* protocol = nullptr;
    ProtocolFaults* faults = nullptr;
};

} // namespace ZuControl
