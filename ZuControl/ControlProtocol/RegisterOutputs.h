#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/RegisterOutputItem.h"
#include "ZuControl/ControlProtocol/RegisterOutputsAttributes.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A register map, the record that clients read and that is saved.
struct ZUCONTROL_API RegisterOutputs : public CommonProtocolOutputProp
{
    RegisterOutputs();
    ~RegisterOutputs() override;

    Zu::Params::Array<RegisterOutputItem> map;
    RegisterOutputsAttributes attributes;
};

} // namespace ZuControl::ControlProtocol
