#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/RegisterOutputItem.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a register map.
struct ZUCONTROL_API RegisterOutputItemArgs : public RegisterOutputItem
{
    RegisterOutputItemArgs();
    ~RegisterOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

} // namespace ZuControl::ControlProtocol
