#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuControl/Export.h"

namespace ZuControl::Protocol
{

/// The base of the configuration records of all outputs.
struct ZUCONTROL_INTERNAL_API CommonControlProps : public Zu::Params::Group
{
    CommonControlProps();
    ~CommonControlProps() override;
};

} // namespace ZuControl::Protocol
