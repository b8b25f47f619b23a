#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// Counters of the module since it was built. The numbers only grow; they are read one after the other, not at one
/// moment.
struct ControlStatistics
{
    /// The delivery of results to one protocol.
    struct Protocol
    {
        std::string typeName;
        uint64 batches = 0; ///< handed to the protocol
        uint64 resultSets = 0;
        uint64 ageUsec = 0; ///< sum over all batches of the time from the first set to the hand-over
    };

    uint64 resultSets = 0;    ///< that reached the fan-out and were not empty
    uint64 resultItems = 0;   ///< in these sets
    uint64 itemsHandedOn = 0; ///< to dispatchers, counted for each
    uint64 operationsSucceeded = 0;
    uint64 operationsFailed = 0;
    uint64 operationsRefused = 0;    ///< because another one was in progress
    std::vector<Protocol> protocols; ///< all of them, by name
};

} // namespace ZuControl
