#pragma once

#include "wApi/wExport.h"

namespace ZuScan
{

class ICommandTarget;

/// One sensor of a scanner. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API ISensor
{
public:
    virtual ~ISensor();

    /// Returns null if the sensor takes no commands. The sensor owns the target.
    virtual ICommandTarget* CommandTarget() = 0;
};

} // namespace ZuScan
