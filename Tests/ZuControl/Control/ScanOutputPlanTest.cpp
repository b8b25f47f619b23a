#include "ZuControl/Control/ScanOutputPlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

namespace ZuControl
{

namespace
{

using Maps = std::vector<std::unique_ptr<ScanOutputMap const>>;

std::unique_ptr<ScanOutputMap const> MapOf(std::vector<uint64> const& ids)
{
    ScanOutputMap::Texts texts;
    for (uint64 const id : ids)
    {
        texts.emplace(id, std::to_string(id));
    }
    return std::make_unique<ScanOutputMap const>(std::move(texts));
}

ScanOutputPlan PlanOf(Maps const& maps)
{
    std::vector<ScanOutputMap const*> wanted;
    for (auto const& map : maps)
    {
        wanted.push_back(map.get());
    }
    return ScanOutputPlan(wanted);
}

} // namespace

TEST(ScanOutputPlan, HasNobodyForAnythingWithoutReceivers)
{
    ScanOutputPlan const plan = PlanOf({});

    EXPECT_EQ(plan.Wanting(0), 0u);
    EXPECT_EQ(plan.Wanting(1), 0u);
}

TEST(ScanOutputPlan, TellsWhoWantsASource)
{
    Maps maps;
    maps.push_back(MapOf({1, 2}));
    maps.push_back(MapOf({}));
    maps.push_back(MapOf({2, 3}));

    ScanOutputPlan const plan = PlanOf(maps);

    EXPECT_EQ(plan.Wanting(1), 0b001u);
    EXPECT_EQ(plan.Wanting(2), 0b101u);
    EXPECT_EQ(plan.Wanting(3), 0b100u);
    EXPECT_EQ(plan.Wanting(4), 0u);
}

TEST(ScanOutputPlan, TakesZeroForANumberAsGoodAsAny)
{
    Maps maps;
    maps.push_back(MapOf({7}));
    maps.push_back(MapOf({0}));

    ScanOutputPlan const plan = PlanOf(maps);

    EXPECT_EQ(plan.Wanting(0), 0b10u);
}

TEST(ScanOutputPlan, HasABitForEachOfAsManyReceiversAsItTakes)
{
    Maps maps;
    for (uint64 i = 0; i < ScanOutputPlan::MAX_RECEIVERS; ++i)
    {
        maps.push_back(MapOf({i, 1000}));
    }

    ScanOutputPlan const plan = PlanOf(maps);

    EXPECT_EQ(plan.Wanting(63), uint64{1} << 63);
    EXPECT_EQ(plan.Wanting(1000), ~uint64{0});
}

TEST(ScanOutputPlan, AnswersAsTheMapsDoForAnyNumbers)
{
    std::mt19937_64 random(20261121);
    for (int round = 0; round < 100; ++round)
    {
        // Few values of the low bits, so that many ids fall into one slot.
        auto const draw = [&random] { return (random() % 8) << 32 | random() % 40; };
        Maps maps;
        for (uint64 i = 0; i < 5; ++i)
        {
            std::vector<uint64> ids(random() % 60);
            std::ranges::generate(ids, draw);
            maps.push_back(MapOf(ids));
        }

        ScanOutputPlan const plan = PlanOf(maps);

        for (int i = 0; i < 400; ++i)
        {
            uint64 const id = draw();
            ScanOutputPlan::Receivers expected = 0;
            for (uint64 receiver = 0; receiver < maps.size(); ++receiver)
            {
                expected |= maps[receiver]->Contains(id) ? uint64{1} << receiver : 0;
            }
            ASSERT_EQ(plan.Wanting(id), expected) << id;
        }
    }
}

} // namespace ZuControl
