#pragma once

#include "wApi/wTypes.h"

/// The time and the position at which the sensor took one frame.
struct wStamp
{
    uint16 stampStatus = 0;  ///< bits of the digital inputs
    uint64 stampCounter = 0; ///< number of the frame
    uint64 stampTime = 0;    ///< microseconds
    int64 stampEncoder = 0;  ///< ticks
    int64 stampValue = 0;

    bool operator==(wStamp const&) const = default;
};
