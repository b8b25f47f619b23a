#pragma once

#include "wApi/wTypes.h"

namespace ZuControl
{

/// The status of a protocol. The instance sets `Starting`, `Stopping` and the two failures of `Start` and `Stop`; the
/// protocol reports the others, and failures that it finds itself.
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
