#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/TextIdStandardOutputItem.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a map with text ids.
struct ZUCONTROL_API TextIdStandardOutputItemArgs : public TextIdStandardOutputItem
{
    TextIdStandardOutputItemArgs();
    ~TextIdStandardOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< has no effect: there is no next text that an item could move to
};

} // namespace ZuControl::ControlProtocol
