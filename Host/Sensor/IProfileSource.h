#pragma once

#include "Host/Sensor/Profile.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// What lies under the laser line. One thread at a time.
class IProfileSource
{
public:
    virtual ~IProfileSource();

    /// The profile of frame `frame`, which counts from 0 since the scan start. Valid until the next call.
    virtual ProfileView ProfileAt(uint64 frame) = 0;
};

} // namespace ZuHost
