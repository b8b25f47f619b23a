#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// The address model of an assembly; read-only for clients.
struct ZUCONTROL_API RegisterAssemblyAttributes : public Zu::Params::Group
{
    RegisterAssemblyAttributes();
    ~RegisterAssemblyAttributes() override;

    Zu::Params::Value<bool> isGlobalAddressSpaceUsed; ///< an output id is a register address, not a plain number
    Zu::Params::Value<uint16> outputIdMin;
    Zu::Params::Value<uint16> outputIdMax;
};

/// The names of an assembly; read-only for clients.
struct ZUCONTROL_API RegisterAssemblyProperties : public Zu::Params::Group
{
    RegisterAssemblyProperties();
    ~RegisterAssemblyProperties() override;

    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<std::string> id;
};

} // namespace ZuControl::ControlProtocol
