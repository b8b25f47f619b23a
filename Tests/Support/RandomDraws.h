#pragma once

#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>

namespace ZuTest
{

/// The random numbers of a test. A seed gives the same numbers on every machine. A failing test prints its seed;
/// `--gtest_random_seed=N` selects a seed.
class RandomDraws final
{
public:
    explicit RandomDraws(uint32 usualSeed) : seed(SeedOr(usualSeed)), generator(seed)
    {
    }

    RandomDraws(RandomDraws const&) = delete;
    RandomDraws& operator=(RandomDraws const&) = delete;

    uint32 Below(uint32 limit)
    {
        return static_cast<uint32>(generator() % limit);
    }

    bool OneIn(uint32 count)
    {
        return Below(count) == 0;
    }

    /// An index of `list`, which is not empty.
    template <typename List>
    std::size_t IndexOf(List const& list)
    {
        return Below(static_cast<uint32>(list.size()));
    }

    friend std::ostream& operator<<(std::ostream& stream, RandomDraws const& draws)
    {
        return stream << "seed " << draws.seed;
    }

private:
    static uint32 SeedOr(uint32 usualSeed)
    {
        auto const given = static_cast<uint32>(GTEST_FLAG_GET(random_seed));
        return given != 0 ? given : usualSeed;
    }

    uint32 const seed;
    std::mt19937 generator;
};

/// The number of operations of a random test: `released` in a release build, fewer in a slow build, where they still
/// reach every case.
constexpr int OperationsOf(int released)
{
#ifdef NDEBUG
    return released;
#else
    return released / 40;
#endif
}

} // namespace ZuTest
