#include "ZuControl/Control/ScanOutputPlan.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace ZuControl
{

namespace
{

ScanOutputMap::Texts TextsOf(std::vector<std::string> const& ids)
{
    ScanOutputMap::Texts texts;
    for (std::string const& id : ids)
    {
        texts.emplace(ScanOutputMap::NumericId(id), id);
    }
    return texts;
}

} // namespace

TEST(ScanOutputMap, NumbersADataSourceByItsHash)
{
    EXPECT_EQ(ScanOutputMap::NumericId(""), 0xcbf29ce484222325u);
    EXPECT_EQ(ScanOutputMap::NumericId("a"), 0xaf63dc4c8601ec8cu);
    EXPECT_EQ(ScanOutputMap::NumericId("foobar"), 0x85944171f73967e8u);
}

TEST(ScanOutputMap, WantsNothingUntilItIsToldSo)
{
    ScanOutputMap const map;

    EXPECT_TRUE(map.Empty());
    EXPECT_FALSE(map.Contains(ScanOutputMap::NumericId("a")));
    EXPECT_FALSE(map.Contains(0));
    EXPECT_EQ(map.Text(0), nullptr);
}

TEST(ScanOutputMap, WantsWhatItIsGiven)
{
    ScanOutputMap const map(TextsOf({"a", "b"}));

    EXPECT_FALSE(map.Empty());
    EXPECT_EQ(map.Count(), 2u);
    EXPECT_TRUE(map.Contains(ScanOutputMap::NumericId("a")));
    EXPECT_TRUE(map.Contains(ScanOutputMap::NumericId("b")));
    EXPECT_FALSE(map.Contains(ScanOutputMap::NumericId("c")));
    ASSERT_NE(map.Text(ScanOutputMap::NumericId("a")), nullptr);
    EXPECT_EQ(*map.Text(ScanOutputMap::NumericId("a")), "a");
    EXPECT_EQ(map.Text(ScanOutputMap::NumericId("c")), nullptr);
}

TEST(ScanOutputMap, TakesZeroForANumberAsGoodAsAny)
{
    ScanOutputMap const map(ScanOutputMap::Texts{{0, "zero"}, {1, "one"}});

    EXPECT_TRUE(map.Contains(0));
    EXPECT_TRUE(map.Contains(1));
    EXPECT_FALSE(map.Contains(2));
}

TEST(ScanOutputMap, AnswersAsAPlainSetDoesForAnyNumberOfSources)
{
    std::mt19937_64 random(20261121);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<std::string> ids(random() % 300);
        std::set<uint64> plain;
        for (std::string& id : ids)
        {
            id = "source/" + std::to_string(random() % 400);
            plain.insert(ScanOutputMap::NumericId(id));
        }

        ScanOutputMap const map(TextsOf(ids));

        ASSERT_EQ(map.Count(), plain.size());
        ASSERT_FALSE(map.Contains(0));
        for (int i = 0; i < 400; ++i)
        {
            uint64 const id = ScanOutputMap::NumericId("source/" + std::to_string(i));
            ASSERT_EQ(map.Contains(id), plain.contains(id)) << i;
        }
    }
}

} // namespace ZuControl
