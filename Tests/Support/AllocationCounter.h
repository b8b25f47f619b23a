#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// Counts the allocations of the thread that constructed it, from construction on. Replaces operator new in the program
/// that uses it.
class AllocationCounter
{
public:
    AllocationCounter();

    uint64 Count() const;

    /// The number of allocated bytes, freed or not.
    uint64 Bytes() const;

private:
    uint64 const countBefore;
    uint64 const bytesBefore;
};

} // namespace ZuTest
