#pragma once

#include "ZuControl/ControlProtocol/TextIdStandardOutputs.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for several items of a map with text ids. Such items cannot shift, so there is no `autoShift`.
struct ZUCONTROL_API TextIdStandardOutputsArgs : public TextIdStandardOutputs
{
    TextIdStandardOutputsArgs();
    ~TextIdStandardOutputsArgs() override;
};

} // namespace ZuControl::ControlProtocol
