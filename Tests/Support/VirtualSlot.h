#pragma once

#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace ZuTest
{

/// The result of `SlotOf` for an operation that is not virtual.
constexpr uint64 NO_SLOT = std::numeric_limits<uint64>::max();

/// A virtual destructor takes two slots: the complete-object destructor and the deleting destructor.
constexpr uint64 SLOTS_OF_DESTRUCTOR = 2;

/// The slot of a virtual operation in its table, counted from 0. It is read from a pointer to member, where the Itanium
/// ABI stores the offset plus one.
template <typename Operation>
uint64 SlotOf(Operation operation)
{
    std::uintptr_t words[2] = {};
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words, &operation, sizeof words);
    return (words[0] & 1) != 0 ? (words[0] - 1) / sizeof(void*) : NO_SLOT;
}

/// Succeeds if the operations have consecutive slots from `first` on, in the order of the arguments.
template <typename... Operations>
testing::AssertionResult StandInOrder(uint64 first, Operations... operations)
{
    std::vector<uint64> const slots{SlotOf(operations)...};
    for (uint64 i = 0; i < slots.size(); ++i)
    {
        if (slots[i] != first + i)
        {
            return testing::AssertionFailure()
                   << "operation " << i << " has slot " << slots[i] << " in place of " << first + i;
        }
    }
    return testing::AssertionSuccess();
}

} // namespace ZuTest
