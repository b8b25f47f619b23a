#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// What a block is to become; an empty text leaves what it has.
struct ZUCONTROL_API UpdateBlockNewParams : public Zu::Params::Group
{
    UpdateBlockNewParams();
    ~UpdateBlockNewParams() override;

    Zu::Params::Value<std::string> dataSource;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<uint16> outputId; ///< where the block is to go; 65535: it stays
};

} // namespace ZuControl::ControlProtocol
