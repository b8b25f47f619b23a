#pragma once

#include "ZuControl/Export.h"

namespace ZuControl
{

/// Tells on which kind of system the module runs. The host implements it; the answers do not change while the module
/// lives.
///
/// The module asks while it is constructed, on the host's main thread; a protocol may ask at any time on any thread.
/// Queries must not block. An exception ends the construction of the module.
class ZUCONTROL_API IDeploymentQuery
{
public:
    IDeploymentQuery() noexcept;
    virtual ~IDeploymentQuery();

    virtual bool IsPhysicalSensor() = 0;
    virtual bool IsPhysicalBrackle() = 0;
    virtual bool IsVirtualSensor() = 0;
    virtual bool IsVirtualBrackle() = 0;
    virtual bool IsTavrinServiceApp() = 0;
};

} // namespace ZuControl
