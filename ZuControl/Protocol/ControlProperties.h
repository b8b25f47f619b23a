#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Control/ProtocolStatus.h"
#include "ZuControl/Export.h"

#include <string>

ZU_DECLARE_ENUM_VALUE(ZuControl::ProtocolStatus);

namespace ZuControl::Protocol
{

/// The document of one protocol. Of its own members a client changes "enabled" alone.
struct ZUCONTROL_INTERNAL_API ControlProperties final : public Zu::Params::Group
{
    ControlProperties();
    ~ControlProperties() override;

    /// Shows the protocol's own record under "parameters", behind the others. It is not owned; this record is done with it
    /// before it ends. Title and sort order are stored in `parameters` where they differ: the first call stores them, later
    /// calls only read.
    void ShowParameters(Zu::Params::Group& parameters);

    /// Whether `candidate` is one of the states that the schema lists.
    bool KnowsStatus(ProtocolStatus candidate) const;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Enum<ProtocolStatus> status;
    Zu::Params::Value<std::string> id;
    Zu::Params::Value<std::string> displayName;
};

} // namespace ZuControl::Protocol
