#pragma once

#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// What has been counted up to some moment, or between two.
struct ModbusTotals
{
    uint64 controlDrops = 0; ///< result sets of which a block could not be encoded
    uint64 acceptedClients = 0;
    uint64 rejectedClients = 0; ///< beyond the cap
    uint64 droppedClients = 0;  ///< for silence, a malformed frame or not taking answers
    uint64 requests = 0;
    uint64 exceptions = 0;       ///< requests that were refused; of these:
    uint64 illegalFunctions = 0; ///< exception 1
    uint64 illegalAddresses = 0; ///< exception 2
    uint64 illegalValues = 0;    ///< exception 3
    uint64 busyRefusals = 0;     ///< exception 6
    uint64 bytesIn = 0;
    uint64 bytesOut = 0;
    uint64 resultSets = 0;
    uint64 commands = 0;         ///< taken from the command block
    uint64 registersWritten = 0; ///< by requests that were taken

    /// What has been counted since `earlier`.
    ModbusTotals Since(ModbusTotals const& earlier) const;
};

} // namespace ModbusTcp
