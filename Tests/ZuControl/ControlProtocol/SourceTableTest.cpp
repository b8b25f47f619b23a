#include "ZuControl/ControlProtocol/SourceTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace ZuControl::ControlProtocol
{

TEST(SourceTable, IsEmptyAtFirst)
{
    SourceTable const table;

    EXPECT_FALSE(table.Has(""));
    EXPECT_FALSE(table.Has("profile/a"));
}

TEST(SourceTable, HasASourceUntilAsManyItemsAreGoneAsCame)
{
    SourceTable table;

    table.Add("profile/a");
    table.Add("profile/a");
    table.Remove("profile/a");
    EXPECT_TRUE(table.Has("profile/a"));

    table.Remove("profile/a");
    EXPECT_FALSE(table.Has("profile/a"));
}

TEST(SourceTable, TakesTheEmptySourceForOneLikeOthers)
{
    SourceTable table;

    table.Add("");

    EXPECT_TRUE(table.Has(""));
    EXPECT_FALSE(table.Has("a"));
}

TEST(SourceTable, DoesNothingForASourceThatIsNotThere)
{
    SourceTable table;
    table.Remove("profile/a");
    table.Add("profile/a");

    table.Remove("profile/b");

    EXPECT_TRUE(table.Has("profile/a"));
}

TEST(SourceTable, HasNothingOnceItIsCleared)
{
    SourceTable table;
    table.Add("profile/a");

    table.Clear();

    EXPECT_FALSE(table.Has("profile/a"));
    table.Add("profile/b");
    EXPECT_TRUE(table.Has("profile/b"));
}

TEST(SourceTable, AgreesWithAMapOverManyChanges)
{
    uint32 const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    SourceTable table;
    std::map<std::string, int> users;
    for (int round = 0; round < 60000; ++round)
    {
        bool const isShrinking = round / 10000 % 2 == 1; // fills and empties in turn, so that texts become unused
        std::string const source = "tools/tool-" + std::to_string(random() % 3000) + "/outputs/height";
        if (random() % 4 < (isShrinking ? 1u : 3u))
        {
            table.Add(source);
            ++users[source];
        }
        else if (auto const found = users.find(source); found != users.end() && found->second > 0)
        {
            table.Remove(source);
            --found->second;
        }
        ASSERT_EQ(table.Has(source), users[source] > 0) << source;
    }

    for (auto const& [source, count] : users)
    {
        EXPECT_EQ(table.Has(source), count > 0) << source;
    }
}

} // namespace ZuControl::ControlProtocol
