#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// Makes one allocation of the constructing thread fail: allocation `number` since construction, counted from 1.
/// Replaces operator new in the program that uses it.
class AllocationFailure
{
public:
    explicit AllocationFailure(uint64 number);
    ~AllocationFailure();

    AllocationFailure(AllocationFailure const&) = delete;
    AllocationFailure& operator=(AllocationFailure const&) = delete;

    /// Whether the allocation was reached and has failed.
    bool HasHappened() const;
};

} // namespace ZuTest
