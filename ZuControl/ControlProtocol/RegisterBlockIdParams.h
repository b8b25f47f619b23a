#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// Names one block by its output id.
struct ZUCONTROL_API RegisterBlockIdParams : public Zu::Params::Group
{
    RegisterBlockIdParams();
    ~RegisterBlockIdParams() override;

    Zu::Params::Value<uint16> outputId; ///< 65535: none is given
};

} // namespace ZuControl::ControlProtocol
