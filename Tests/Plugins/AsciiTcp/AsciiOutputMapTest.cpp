#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "Support/Refusal.h"
#include "ZuCore/DataSourceHash.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace AsciiTcp
{

using Names = std::vector<std::string>;
using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;

class AsciiOutputMapTest : public testing::Test
{
protected:
    void Add(std::string const& name, std::string const& source)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        item.source.Set(source);
        map.Add(item);
    }

    Names Content()
    {
        Names content;
        auto const table = OutputTable::Take(map);
        for (OutputTable::Output const& output : table->Outputs())
        {
            content.push_back(output.name + " " + output.source);
        }
        return content;
    }

    Names const newJob = {"meanZ profile/meanZ", "points profile/points", "width profile/width", "zMax profile/zMax",
                          "zMin profile/zMin"};
    AsciiOutputMap map;
    AsciiOutputActions actions{map};
};

TEST_F(AsciiOutputMapTest, BeginsWithTheMeasurementsOfTheProfile)
{
    EXPECT_EQ(Content(), newJob);
}

TEST_F(AsciiOutputMapTest, GoesBackToTheMapOfANewJobWhenCleared)
{
    actions.InvokeAction("removeAll", *actions.GetActionParams("removeAll"));
    Add("zMax", "profile/width");

    map.Clear();

    EXPECT_EQ(Content(), newJob);
}

TEST_F(AsciiOutputMapTest, IsEmptyWhenAllIsRemoved)
{
    actions.InvokeAction("removeAll", *actions.GetActionParams("removeAll"));

    EXPECT_EQ(Content(), Names{});
    EXPECT_EQ(map.Count(), 0u);
}

TEST_F(AsciiOutputMapTest, HasTheActionsOfEveryMap)
{
    auto const args = actions.GetActionParams("remove");
    dynamic_cast<TextIdStandardOutputItemArgs&>(*args).outputId.Set("points");
    actions.InvokeAction("remove", *args);

    EXPECT_EQ(Content().size(), 4u);
    EXPECT_EQ(actions.ListActions().size(), 6u);
    EXPECT_EQ(ZuTest::RefusalOf([&] { actions.InvokeAction("Add", *args); }),
              (ZuTest::Refusal{-999, "The action 'Add' does not exist. Action ignored."}));
}

TEST_F(AsciiOutputMapTest, HoldsSoManyOutputsAndNoMore)
{
    map.RemoveAll();
    for (uint16 i = 0; i < AsciiOutputMap::MOST_OUTPUTS; ++i)
    {
        Add("output " + std::to_string(i), "source " + std::to_string(i));
    }

    EXPECT_EQ(ZuTest::RefusalOf([this] { Add("one more", "one more"); }), (ZuTest::Refusal{-977, ""}));
}

TEST_F(AsciiOutputMapTest, IsLookedUpByNameAndBySource)
{
    Add("B", "large");
    Add("a", "small");
    Add("aa", "longer");
    Add("with blank", "blank");

    auto const table = OutputTable::Take(map);

    for (std::size_t i = 0; i < table->Outputs().size(); ++i)
    {
        OutputTable::Output const& output = table->Outputs()[i];
        EXPECT_EQ(table->FindName(output.name), i) << output.name;
        EXPECT_EQ(table->FindDataSource(ZuCore::DataSourceHash(output.source)), i) << output.name;
    }
    EXPECT_EQ(table->Outputs()[0].name, "B"); // by bytes: capitals first
    EXPECT_EQ(table->Outputs().size(), 9u);
    EXPECT_EQ(table->Outputs()[table->FindName("with blank")].written, "with%20blank");
    for (char const* name : {"", "A", "ab", "zMaxx", "zzz"})
    {
        EXPECT_EQ(table->FindName(name), OutputTable::NOWHERE) << name;
    }
    EXPECT_EQ(table->FindDataSource(0), OutputTable::NOWHERE);
    EXPECT_EQ(table->FindDataSource(~uint64{0}), OutputTable::NOWHERE);
}

TEST_F(AsciiOutputMapTest, GivesAnEmptyTableWhenItIsEmpty)
{
    map.RemoveAll();

    auto const table = OutputTable::Take(map);

    EXPECT_TRUE(table->Outputs().empty());
    EXPECT_EQ(table->FindName("zMax"), OutputTable::NOWHERE);
    EXPECT_EQ(table->FindDataSource(1), OutputTable::NOWHERE);
}

} // namespace AsciiTcp
