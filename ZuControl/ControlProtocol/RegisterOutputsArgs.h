#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/RegisterOutputs.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for several items of a register map.
struct ZUCONTROL_API RegisterOutputsArgs : public RegisterOutputs
{
    RegisterOutputsArgs();
    ~RegisterOutputsArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

} // namespace ZuControl::ControlProtocol
