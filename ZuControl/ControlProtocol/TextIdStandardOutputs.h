#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/ControlProtocol/TextIdStandardOutputItem.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A map with text ids, sorted by their bytes, the record that clients read and that is saved.
struct ZUCONTROL_API TextIdStandardOutputs : public CommonProtocolOutputProp
{
    TextIdStandardOutputs();
    ~TextIdStandardOutputs() override;

    Zu::Params::Array<TextIdStandardOutputItem> map;
};

} // namespace ZuControl::ControlProtocol
