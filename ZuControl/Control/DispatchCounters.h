#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace ZuControl
{

/// Counters and state of the dispatcher of one protocol. They outlive the dispatchers, which exist while there are
/// handlers. The dispatcher's thread and the threads that start and stop it write them, any thread reads them: relaxed,
/// since the numbers do not depend on each other.
struct DispatchCounters
{
    std::atomic<uint64> batches{0}; ///< handed to the handlers
    std::atomic<uint64> resultSets{0};
    std::atomic<uint64> ageUsec{0}; ///< sum over all batches of the time from the first set to the hand-over

    std::atomic<uint64> busySinceUsec{0}; ///< when the running batch was handed to the handlers; 0: none is running
    std::atomic<bool> hasDied{false};     ///< an exception has ended the thread, and `Stop` has not been called since
};

} // namespace ZuControl
