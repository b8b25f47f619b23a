#pragma once

#include "wApi/wExport.h"

namespace ZuScan
{

class ICommandTarget;

/// One sensor of a scanner. Any thread may call, several at once.
class ZUPLATFORM_API ISensor
{
public:
    virtual ~ISensor();

    /// Null when the sensor takes no commands; the sensor's.
    virtual ICommandTarget* CommandTarget() = 0;
};

} // namespace ZuScan
