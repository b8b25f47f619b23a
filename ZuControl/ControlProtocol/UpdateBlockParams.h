#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/UpdateBlockNewParams.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The block to change, and its new values.
struct ZUCONTROL_API UpdateBlockParams : public Zu::Params::Group
{
    UpdateBlockParams();
    ~UpdateBlockParams() override;

    Zu::Params::Value<uint16> outputId; ///< names the block; 65535: none is given
    Zu::Params::Value<bool> autoShift;  ///< blocks in the way move to higher ids
    UpdateBlockNewParams newParams;
};

} // namespace ZuControl::ControlProtocol
