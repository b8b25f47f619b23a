#include "ZuControl/Control/ControlInstanceMetrics.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/ProtocolFaults.h"
#include "ZuControl/ControlProtocol/IProtocol.h"

namespace ZuControl
{

using ControlProtocol::IProtocol;

ControlInstanceMetrics::ControlInstanceMetrics() = default;
ControlInstanceMetrics::~ControlInstanceMetrics() = default;

void ControlInstanceMetrics::BindProtocol(ControlProtocol::IProtocol* newProtocol)
{
    protocol = newProtocol;
}

void ControlInstanceMetrics::ClearProtocol()
{
    protocol = nullptr;
}

void ControlInstanceMetrics::BindFaults(ProtocolFaults& protocolFaults)
{
    faults = &protocolFaults;
}

Zu::Properties::Structure& ControlInstanceMetrics::UpdateMetrics()
{
    if (protocol == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "No protocol implementation available for the metrics update operation");
    }
    return protocol->UpdateMetrics();
}

void ControlInstanceMetrics::ResetMetrics()
{
    if (protocol == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "No protocol implementation available for the metrics reset operation");
    }
    protocol->ResetMetrics();
}

Zu::Properties::Structure const& ControlInstanceMetrics::GetMetrics() const
{
    if (protocol == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "No protocol implementation available for the metrics fetch operation");
    }
    return faults != nullptr ? faults->Call("GetMetrics", &IProtocol::GetMetrics, protocol) : protocol->GetMetrics();
}

} // namespace ZuControl
