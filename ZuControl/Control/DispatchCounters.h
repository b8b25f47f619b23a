#pragma once

#include "wApi/wTypes.h"

#include <atomic>

namespace ZuControl
{

/// What the dispatcher of one protocol has done. They outlive the dispatchers, which come and go with the handlers. Counted
/// on the dispatcher's thread, read anywhere: relaxed, since no number says anything about another one.
struct DispatchCounters
{
    std::atomic<uint64> batches{0}; ///< handed to the handlers
    std::atomic<uint64> resultSets{0};
    std::atomic<uint64> ageUsec{0}; ///< of all batches together: from the first set of each to its hand-over
};

} // namespace ZuControl
