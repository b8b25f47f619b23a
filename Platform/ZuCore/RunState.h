#pragma once

#include "wApi/wTypes.h"

namespace ZuCore
{

/// What the sensor is doing.
enum class RunState : uint32
{
    READY = 0,
    RUNNING = 1,
    ERROR = 2
};

} // namespace ZuCore
