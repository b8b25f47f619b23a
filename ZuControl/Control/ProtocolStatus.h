#pragma once

#include "wApi/wTypes.h"

namespace ZuControl
{

/// Where a protocol stands. The instance sets what it does itself, starting and stopping; only the protocol reports the
/// rest.
enum class ProtocolStatus : int32
{
    Running = 0,
    Stopped = 1,
    Starting = 2,
    Stopping = 3,
    FailedToStart = 4,
    FailedToStop = 5
};

} // namespace ZuControl
