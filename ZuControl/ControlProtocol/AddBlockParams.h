#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The blocks to add.
struct ZUCONTROL_API AddBlockParams : public Zu::Params::Group
{
    AddBlockParams();
    ~AddBlockParams() override;

    Zu::Params::Array<RegisterBlockParams> blocks;
    Zu::Params::Value<bool> autoShift; ///< blocks in the way move to higher ids
};

} // namespace ZuControl::ControlProtocol
