#pragma once

#include "ZuScan/IActionTarget.h"

namespace ZuScan
{

/// What takes commands by name: actions that change the state of a scanner or a sensor.
class ZUPLATFORM_API ICommandTarget : public IActionTarget
{
public:
    ~ICommandTarget() override;
};

} // namespace ZuScan
