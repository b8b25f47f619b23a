#pragma once

#include "wApi/wTypes.h"

#include <functional>

namespace ZuBench
{

/// Counts the system calls that `work` makes on its own thread. `prepare` and then `work` run in a child process that
/// the caller's process traces; calls of `prepare` and of other threads are not counted. Throws std::runtime_error if
/// the system does not permit tracing.
uint64 SystemCallsOf(std::function<void()> const& prepare, std::function<void()> const& work);

} // namespace ZuBench
