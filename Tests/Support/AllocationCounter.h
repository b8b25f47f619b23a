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

private:
    uint64 const before;
};

} // namespace ZuTest
