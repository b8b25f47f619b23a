#pragma once

#include "wApi/wTypes.h"

#include <set>
#include <string>

namespace ZuControl
{
struct ControlVitals;
}

namespace ZuHost
{

/// How long something may take before it counts as a fault.
struct WatchLimits
{
    uint64 standstillUsec = 1'000'000; ///< of the threads of the module, which come round several times a second
    uint64 operationUsec = 60'000'000; ///< of an operation on the system
};

/// What is wrong with the threads of the module at `nowUsec`, a moment of `wTime_NowUsec`: sentences for the person at the
/// screen, which stay the same for as long as the fault does.
std::set<std::string> Diagnose(ZuControl::ControlVitals const& vitals, WatchLimits const& limits, uint64 nowUsec);

} // namespace ZuHost
