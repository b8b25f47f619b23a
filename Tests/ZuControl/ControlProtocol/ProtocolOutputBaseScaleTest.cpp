#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>

namespace ZuControl::ControlProtocol
{

namespace
{

/// The CPU time of the calling thread. Other load on the machine does not increase it.
double UsedSeconds()
{
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::string SourceName(uint32 number)
{
    return "tool/" + std::to_string(number) + "/measurement";
}

using Round = std::function<double(uint32 count)>; // returns the seconds of CPU time

/// Adds all items with one call.
double AddInBulk(uint32 count)
{
    StandardProtocolOutputMap map(65535, 0, 65534);
    StandardOutputsArgs args;
    for (uint32 i = 0; i < count; ++i)
    {
        args.map.Add().source.Set(SourceName(i));
    }
    double const start = UsedSeconds();
    map.AddAll(args);
    double const used = UsedSeconds() - start;
    EXPECT_EQ(map.Count(), count);
    return used;
}

/// Adds the items one by one.
double AddOneByOne(uint32 count)
{
    StandardProtocolOutputMap map(65535, 0, 65534);
    StandardOutputItemArgs item;
    double const start = UsedSeconds();
    for (uint32 i = 0; i < count; ++i)
    {
        item.outputId.Set(static_cast<uint16>(i));
        item.source.Set(SourceName(i));
        map.Add(item);
    }
    double const used = UsedSeconds() - start;
    EXPECT_EQ(map.Count(), count);
    return used;
}

double BestPerEntry(Round const& round, uint32 count, int rounds)
{
    double best = round(count);
    for (int i = 1; i < rounds; ++i)
    {
        best = std::min(best, round(count));
    }
    return best / count;
}

void ExpectManyToCostAsFewDo(Round const& round)
{
    double const few = BestPerEntry(round, 100, 50);
    double const many = BestPerEntry(round, 10'000, 5);

    EXPECT_LE(many, 3 * few) << "seconds per entry: " << few << " of 100, " << many << " of 10,000";
}

/// The time to compare each source with all sources before it. Only every twentieth source is measured, because this is
/// slow.
double CompareWithAllBefore(uint32 count)
{
    constexpr uint32 STEP = 20;
    StandardOutputs outputs;
    for (uint32 i = 0; i < count; ++i)
    {
        outputs.map.Add().source.Set(SourceName(i));
    }
    bool isFound = false;
    double const start = UsedSeconds();
    for (uint32 i = 0; i < count; i += STEP)
    {
        std::string const& source = outputs.map.At(i).source.Get();
        for (uint32 before = 0; before < i; ++before)
        {
            isFound = isFound || outputs.map.At(before).source.Get() == source;
        }
    }
    double const used = UsedSeconds() - start;
    EXPECT_FALSE(isFound);
    return used * STEP;
}

} // namespace

TEST(ProtocolOutputBaseScaleTest, AddsManySourcesInBulkAtTheCostOfFew)
{
    ExpectManyToCostAsFewDo(AddInBulk);
}

TEST(ProtocolOutputBaseScaleTest, AddsManySourcesOneByOneAtTheCostOfFew)
{
    ExpectManyToCostAsFewDo(AddOneByOne);
}

TEST(ProtocolOutputBaseScaleTest, FindsASourceWithoutAWalkAlongAll)
{
    double const walked = BestPerEntry(CompareWithAllBefore, 10'000, 2);
    double const added = BestPerEntry(AddInBulk, 10'000, 3);

    EXPECT_LE(added, 0.1 * walked) << "seconds per entry: " << added << " added, " << walked << " compared";
}

} // namespace ZuControl::ControlProtocol
