#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/StandardOutputs.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for several items of a map with numeric ids.
struct ZUCONTROL_API StandardOutputsArgs : public StandardOutputs
{
    StandardOutputsArgs();
    ~StandardOutputsArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

} // namespace ZuControl::ControlProtocol
