#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// While it lives, one allocation of the thread that made it fails: the one of this number, counted from 1. A program that
/// uses it has its own operator new.
class AllocationFailure
{
public:
    explicit AllocationFailure(uint64 number);
    ~AllocationFailure();

    AllocationFailure(AllocationFailure const&) = delete;
    AllocationFailure& operator=(AllocationFailure const&) = delete;

    /// Whether there were as many allocations.
    bool HasHappened() const;
};

} // namespace ZuTest
