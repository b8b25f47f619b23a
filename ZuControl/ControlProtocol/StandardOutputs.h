#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/StandardOutputItem.h"
#include "ZuControl/ControlProtocol/StandardOutputsAttributes.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The record of a map with numeric ids, sorted by id. Clients read it, and jobs store it.
struct ZUCONTROL_API StandardOutputs : public CommonProtocolOutputProp
{
    StandardOutputs();
    ~StandardOutputs() override;

    Zu::Params::Array<StandardOutputItem> map;
    StandardOutputsAttributes attributes;
};

} // namespace ZuControl::ControlProtocol
