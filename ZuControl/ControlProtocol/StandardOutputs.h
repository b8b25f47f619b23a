#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/StandardOutputItem.h"
#include "ZuControl/ControlProtocol/StandardOutputsAttributes.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A map with numeric ids, sorted by them, the record that clients read and that is saved.
struct ZUCONTROL_API StandardOutputs : public CommonProtocolOutputProp
{
    StandardOutputs();
    ~StandardOutputs() override;

    Zu::Params::Array<StandardOutputItem> map;
    StandardOutputsAttributes attributes;
};

} // namespace ZuControl::ControlProtocol
