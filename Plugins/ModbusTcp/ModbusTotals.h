#pragma once

#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// Counts up to a moment, or between two moments.
struct ModbusTotals
{
    uint64 controlDrops = 0; ///< result sets with a block that could not be encoded
    uint64 acceptedClients = 0;
    uint64 rejectedClients = 0; ///< beyond maxClients
    uint64 droppedClients = 0;  ///< for silence, a malformed frame or answers not taken
    uint64 requests = 0;
    uint64 exceptions = 0;       ///< refused requests; of these:
    uint64 illegalFunctions = 0; ///< exception 1
    uint64 illegalAddresses = 0; ///< exception 2
    uint64 illegalValues = 0;    ///< exception 3
    uint64 busyRefusals = 0;     ///< exception 6
    uint64 bytesIn = 0;
    uint64 bytesOut = 0;
    uint64 resultSets = 0;
    uint64 commands = 0;         ///< commands taken from the command block
    uint64 registersWritten = 0; ///< by accepted requests

    /// The counts since `earlier`.
    ModbusTotals Since(ModbusTotals const& earlier) const;
};

} // namespace ModbusTcp
