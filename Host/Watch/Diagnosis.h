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

/// How long an activity may take before it counts as a fault.
struct WatchLimits
{
    uint64 standstillUsec = 1'000'000; ///< of the module's threads, which loop several times a second
    uint64 operationUsec = 60'000'000; ///< of a system operation
};

/// Returns a sentence for the user for each fault of the module's threads at `nowUsec` (a time of `wTime_NowUsec`). A
/// sentence does not change as long as its fault lasts.
std::set<std::string> Diagnose(ZuControl::ControlVitals const& vitals, WatchLimits const& limits, uint64 nowUsec);

} // namespace ZuHost
