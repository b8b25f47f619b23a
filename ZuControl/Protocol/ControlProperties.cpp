#include "ZuControl/Protocol/ControlProperties.h"

#include <algorithm>

ZU_INSTANTIATE_ENUM_VALUE(ZuControl::ProtocolStatus);

namespace ZuControl::Protocol
{

ControlProperties::ControlProperties() : Group("")
{
    Register("enabled", "Enabled", enabled);
    Register("status", "Status", status).EnableReadOnly().readOnly.Set(true);
    Register("id", "Id", id);
    Register("displayName", "Name", displayName);
    status.AddOption(ProtocolStatus::Running, "Running")
        .AddOption(ProtocolStatus::Stopped, "Stopped")
        .AddOption(ProtocolStatus::Starting, "Starting")
        .AddOption(ProtocolStatus::Stopping, "Stopping")
        .AddOption(ProtocolStatus::FailedToStart, "Failed To Start")
        .AddOption(ProtocolStatus::FailedToStop, "Failed To Stop");
}

ControlProperties::~ControlProperties() = default;

void ControlProperties::ShowParameters(Zu::Params::Group& parameters)
{
    Register("parameters", "", parameters);
}

bool ControlProperties::KnowsStatus(ProtocolStatus candidate) const
{
    auto const& known = status.enumValues.Get();
    return std::find(known.begin(), known.end(), candidate) != known.end();
}

} // namespace ZuControl::Protocol
