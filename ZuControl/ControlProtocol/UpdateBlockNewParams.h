#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// The new values of a block; an empty text leaves the old value.
struct ZUCONTROL_API UpdateBlockNewParams : public Zu::Params::Group
{
    UpdateBlockNewParams();
    ~UpdateBlockNewParams() override;

    Zu::Params::Value<std::string> dataSource;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<uint16> outputId; ///< the new id of the block; 65535: the id stays
};

} // namespace ZuControl::ControlProtocol
