#pragma once

#include "ZuScan/IActionTarget.h"

namespace ZuScan
{

/// An object that takes commands by name. Commands are actions that change the state of a scanner or a sensor.
class ZUPLATFORM_API ICommandTarget : public IActionTarget
{
public:
    ~ICommandTarget() override;
};

} // namespace ZuScan
