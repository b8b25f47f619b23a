#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/RegisterOutputItem.h"
#include "ZuControl/ControlProtocol/RegisterOutputsAttributes.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The record of a register map. Clients read it, and jobs store it.
struct ZUCONTROL_API RegisterOutputs : public CommonProtocolOutputProp
{
    RegisterOutputs();
    ~RegisterOutputs() override;

    Zu::Params::Array<RegisterOutputItem> map;
    RegisterOutputsAttributes attributes;
};

} // namespace ZuControl::ControlProtocol
