#pragma once

#include "wApi/wTypes.h"

namespace ZuCore
{

/// The run state of the sensor.
enum class RunState : uint32
{
    READY = 0,
    RUNNING = 1,
    ERROR = 2
};

} // namespace ZuCore
