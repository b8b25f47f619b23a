#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// The names of an assembly; read-only for clients.
struct ZUCONTROL_API RegisterAssemblyProperties : public Zu::Params::Group
{
    RegisterAssemblyProperties();
    ~RegisterAssemblyProperties() override;

    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<std::string> id;
};

} // namespace ZuControl::ControlProtocol
