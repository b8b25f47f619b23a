#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/TextIdStandardOutputItem.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The record of a map with text ids, sorted by their bytes. Clients read it, and jobs store it.
struct ZUCONTROL_API TextIdStandardOutputs : public CommonProtocolOutputProp
{
    TextIdStandardOutputs();
    ~TextIdStandardOutputs() override;

    Zu::Params::Array<TextIdStandardOutputItem> map;
};

} // namespace ZuControl::ControlProtocol
