/// Filling an output map, which holds each source once, compared with an array of the same records that is searched
/// from the start for every added record. Ids are added in rising, falling and scattered order.

#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include <benchmark/benchmark.h>

#include <string>

namespace
{

using namespace ZuControl::ControlProtocol;

enum Order : int64
{
    RISING,
    FALLING,
    JUMPING
};

uint16 IdAt(int64 index, int64 count, int64 order)
{
    constexpr int64 STRIDE = 7919; // prime, so that each id comes once
    switch (order)
    {
    case RISING:
        return static_cast<uint16>(index);
    case FALLING:
        return static_cast<uint16>(count - 1 - index);
    default:
        return static_cast<uint16>(index * STRIDE % count);
    }
}

std::string SourceAt(int64 index)
{
    return "profile/measurement" + std::to_string(index);
}

void AddToMap(benchmark::State& state)
{
    int64 const count = state.range(0);
    for (auto _ : state)
    {
        StandardProtocolOutputMap map(65534, 0, StandardProtocolOutputMap::OUTPUT_ID_MAX);
        StandardOutputItemArgs item;
        for (int64 i = 0; i < count; ++i)
        {
            item.outputId = IdAt(i, count, state.range(1));
            item.source = SourceAt(i);
            map.Add(item);
        }
        if (map.Count() != static_cast<uint64>(count))
        {
            state.SkipWithError("an item was refused");
        }
    }
}

/// The items behind a new item move up by their values, as in the map.
void AddWithLinearTest(benchmark::State& state)
{
    int64 const count = state.range(0);
    for (auto _ : state)
    {
        Zu::Params::Array<StandardOutputItem> items;
        StandardOutputItemArgs item;
        for (int64 i = 0; i < count; ++i)
        {
            item.outputId = IdAt(i, count, state.range(1));
            item.source = SourceAt(i);
            uint64 place = 0;
            bool isThere = false;
            for (uint64 k = 0; k < items.Count(); ++k)
            {
                StandardOutputItem const& other = items.At(k);
                place += other.outputId.Get() < item.outputId.Get() ? 1 : 0;
                isThere = isThere || other.source.Get() == item.source.Get();
            }
            if (isThere)
            {
                state.SkipWithError("an item was refused");
            }
            items.Add();
            for (uint64 k = items.Count() - 1; k > place; --k)
            {
                items.At(k).TakeOver(items.At(k - 1));
            }
            items.At(place).TakeOver(item);
        }
    }
}

void EveryOrder(benchmark::internal::Benchmark* measured)
{
    measured->ArgNames({"items", "order"})->ArgsProduct({{1000, 10000}, {RISING, FALLING, JUMPING}});
    measured->Unit(benchmark::kMillisecond);
}

BENCHMARK(AddToMap)->Name("OutputMap/Add")->Apply(EveryOrder);
BENCHMARK(AddWithLinearTest)->Name("OutputMap/LinearTest")->Apply(EveryOrder);

} // namespace
