#pragma once

#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuControl/Export.h"

namespace ZuControl
{

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

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;
    Zu::Properties::Structure const& GetMetrics() const override;

private:
    ControlProtocol::IProtocol* protocol = nullptr;
};

} // namespace ZuControl
