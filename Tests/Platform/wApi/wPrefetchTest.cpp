#include "wApi/wPrefetch.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace
{

TEST(wPrefetch, LeavesMemoryAsItIsAndTakesAnyAddress)
{
    std::array<uint64, 64> memory{};
    memory.fill(0x0102030405060708);
    auto const before = memory;

    wPrefetch_ForWrite(memory.data(), 0);
    wPrefetch_ForWrite(memory.data(), sizeof memory);
    wPrefetch_ForWrite(nullptr, 0);
    wPrefetch_ForWrite(nullptr, std::numeric_limits<uint64>::max());

    EXPECT_EQ(memory, before);
}

} // namespace
