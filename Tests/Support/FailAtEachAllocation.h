#pragma once

#include "Support/AllocationFailure.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace ZuTest
{

/// Makes the change once for each of its allocations, which fails, and at last without a failure. Before each `prepare`
/// makes things as they were, behind each `check` is told whether the change was refused. Gives how many allocations
/// there were: 0 means that the change takes no memory.
template <typename Prepare, typename Change, typename Check>
uint64 FailAtEachAllocation(Prepare&& prepare, Change&& change, Check&& check)
{
    constexpr uint64 MOST_ALLOCATIONS = 10'000; // of one change: the end of a test that would have none
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
