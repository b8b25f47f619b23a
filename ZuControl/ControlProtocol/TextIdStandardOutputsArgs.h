#pragma once

#include "ZuControl/ControlProtocol/TextIdStandardOutputs.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The arguments for several items of a map with text ids. Such items cannot shift, so nothing says whether they may.
struct ZUCONTROL_API TextIdStandardOutputsArgs : public TextIdStandardOutputs
{
    TextIdStandardOutputsArgs();
    ~TextIdStandardOutputsArgs() override;
};

} // namespace ZuControl::ControlProtocol
