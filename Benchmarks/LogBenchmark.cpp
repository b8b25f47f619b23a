/// A log line that no sink wants, compared with a relaxed load; eight of each per turn.

#include "ZuApi/Logging.h"

#include <benchmark/benchmark.h>

#include <atomic>

namespace
{

constexpr int64 LINES = 8;

std::atomic<uint32> flag{0};

void DisabledLine(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state)
    {
        ZU_LOG_INFO("Line %d", ++number);
        ZU_LOG_INFO("Line %d", ++number);
        ZU_LOG_WARNING("Line %d", ++number);
        ZU_LOG_WARNING("Line %d", ++number);
        ZU_LOG_INFO("Line %d", ++number);
        ZU_LOG_INFO("Line %d", ++number);
        ZU_LOG_USER_INFO("Line %1$d", ++number);
        ZU_LOG_USER_INFO("Line %1$d", ++number);
    }
    if (number != 0)
    {
        state.SkipWithError("some sink wants the lines");
    }
}

void RelaxedLoad(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (int64 i = 0; i < LINES; ++i)
        {
            benchmark::DoNotOptimize(flag.load(std::memory_order_relaxed));
        }
    }
}

BENCHMARK(DisabledLine)->Name("Log/DisabledLine");
BENCHMARK(RelaxedLoad)->Name("Log/RelaxedLoad");

} // namespace
