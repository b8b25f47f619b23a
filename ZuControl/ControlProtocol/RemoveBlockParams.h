#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/RegisterBlockIdParams.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The blocks to remove.
struct ZUCONTROL_API RemoveBlockParams : public Zu::Params::Group
{
    RemoveBlockParams();
    ~RemoveBlockParams() override;

    Zu::Params::Array<RegisterBlockIdParams> outputIdList;
};

} // namespace ZuControl::ControlProtocol
