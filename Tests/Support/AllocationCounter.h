#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// Counts what the thread that made it allocates from then on. A program that uses it has its own operator new.
class AllocationCounter
{
public:
    AllocationCounter();

    uint64 Count() const;

    /// What was asked for, whether it was given back or not.
    uint64 Bytes() const;

private:
    uint64 const countBefore;
    uint64 const bytesBefore;
};

} // namespace ZuTest
