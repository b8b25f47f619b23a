#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/StandardOutputItem.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a map with numeric ids.
struct ZUCONTROL_API StandardOutputItemArgs : public StandardOutputItem
{
    StandardOutputItemArgs();
    ~StandardOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

} // namespace ZuControl::ControlProtocol
