#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuControl/Export.h"

namespace ZuControl::Protocol
{

/// What the configuration records of all outputs derive from.
struct ZUCONTROL_INTERNAL_API CommonControlProps : public Zu::Params::Group
{
    CommonControlProps();
    ~CommonControlProps() override;
};

} // namespace ZuControl::Protocol
