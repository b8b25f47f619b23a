#pragma once

#include "wApi/wTypes.h"

#include <functional>

namespace ZuBench
{

/// How many system calls `work` makes on its own thread, as a tracing parent sees them. Both run in a child process, `prepare`
/// uncounted; threads that it starts are not counted. Throws std::runtime_error when the system lets nobody trace.
uint64 SystemCallsOf(std::function<void()> const& prepare, std::function<void()> const& work);

} // namespace ZuBench
