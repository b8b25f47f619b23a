#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// What the module itself has done since it was built. The numbers only grow; they are not of one moment.
struct ControlStatistics
{
    /// The way of results to one protocol.
    struct Protocol
    {
        std::string typeName;
        uint64 batches = 0; ///< handed over
        uint64 resultSets = 0;
        uint64 ageUsec = 0; ///< of all batches together: from the first set of each to its hand-over
    };

    uint64 resultSets = 0;    ///< that came to the fan-out and held anything
    uint64 resultItems = 0;   ///< in them
    uint64 itemsHandedOn = 0; ///< to dispatchers, counted for each
    uint64 operationsSucceeded = 0;
    uint64 operationsFailed = 0;
    uint64 operationsRefused = 0;    ///< another one was in progress
    std::vector<Protocol> protocols; ///< all of them, by name
};

} // namespace ZuControl
