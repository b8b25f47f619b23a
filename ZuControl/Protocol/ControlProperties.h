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

/// The document of one protocol. A client can change its member "enabled" and, under "parameters", the protocol's
/// record.
struct ZUCONTROL_INTERNAL_API ControlProperties final : public Zu::Params::Group
{
    ControlProperties();
    ~ControlProperties() override;

    /// Adds the protocol's own record as the last member, "parameters". The record is not owned and outlives this
    /// object. Title and sort order are stored in `parameters` when they differ: the first call stores them, later
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
