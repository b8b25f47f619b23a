#pragma once

#include "Host/Sensor/Profile.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// Supplies the profiles under the laser line. One thread at a time.
class IProfileSource
{
public:
    virtual ~IProfileSource();

    /// The profile of frame `frame`, counted from 0 at the scan start. Valid until the next call.
    virtual ProfileView ProfileAt(uint64 frame) = 0;
};

} // namespace ZuHost
