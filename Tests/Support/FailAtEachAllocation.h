#pragma once

#include "Support/AllocationFailure.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace ZuTest
{

/// Repeats `change`; in each run another one of its allocations fails, and in the last run none. `prepare` restores the
/// initial state before each run. `check` is called after each run with true if the change was refused. Returns the
/// number of allocations of the change; 0 means that it does not allocate.
template <typename Prepare, typename Change, typename Check>
uint64 FailAtEachAllocation(Prepare&& prepare, Change&& change, Check&& check)
{
    constexpr uint64 MOST_ALLOCATIONS = 10'000; // of one change; bounds the test
    for (uint64 number = 1; number < MOST_ALLOCATIONS; ++number)
    {
        SCOPED_TRACE("allocation " + std::to_string(number));
        prepare();
        bool isRefused = false;
        bool hasFailed = true;
        {
            AllocationFailure const failure(number);
            try
            {
                change();
            }
            catch (std::exception const&)
            {
                isRefused = true;
            }
            hasFailed = failure.HasHappened();
        }
        check(isRefused);
        if (!hasFailed)
        {
            EXPECT_FALSE(isRefused);
            return number - 1;
        }
    }
    ADD_FAILURE() << "the change took too many allocations";
    return MOST_ALLOCATIONS;
}

} // namespace ZuTest
