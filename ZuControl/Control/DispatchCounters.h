#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace ZuControl
{

/// What the dispatcher of one protocol has done, and how it is. They outlive the dispatchers, which come and go with the
/// handlers. Written on the dispatcher's thread and by who starts and stops it, read anywhere: relaxed, since no number says
/// anything about another one.
struct DispatchCounters
{
    std::atomic<uint64> batches{0}; ///< handed to the handlers
    std::atomic<uint64> resultSets{0};
    std::atomic<uint64> ageUsec{0}; ///< of all batches together: from the first set of each to its hand-over

    std::atomic<uint64> busySinceUsec{0}; ///< when the handlers got the batch that they have; 0: they have none
    std::atomic<bool> hasDied{false};     ///< the thread has ended by an exception and has not been stopped since
};

} // namespace ZuControl
