#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"

#include "Support/OutputMapFixture.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

namespace ZuControl::ControlProtocol
{

using ZuTest::Error;
using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::UserError;
using ZuTest::UserWarning;
using ZuTest::Warning;

namespace
{

using Lines = std::vector<LogLine>;
char const* const ADD_ALL_LABEL = "ZuControl::ControlProtocol::NumericIdProtocolOutputBase::AddAll";
std::string const NOT_ALL =
    "One or more sources could not be added to the connection map. Logs may have additional information.";
std::string const EMPTY_SOURCE =
    "Data source  in the list of sources to add is invalid. Please correct the data source and try again.";

std::string BadId(std::string const& source)
{
    return "Data source " + source +
           " in the list of sources to add has invalid output identifier (65535). Please correct the output id and try "
           "again.";
}

std::string TakenId(std::string const& source)
{
    return "Unable to update output id for data source [" + source +
           "]. The specified address would cause the selected source to overlap addresses used by an existing data "
           "source.";
}

} // namespace

class NumericIdProtocolOutputBaseTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    /// Adds items with sources named after their ids.
    void PlaceAt(std::vector<int> const& ids)
    {
        for (int const id : ids)
        {
            Place({{{"outputId", id}, {"source", "s" + std::to_string(id)}}});
        }
    }

    std::vector<int> IdsOnly()
    {
        std::vector<int> ids;
        for (auto const& [id, source] : Items())
        {
            ids.push_back(id.get<int>());
        }
        return ids;
    }

    static List Sources(std::vector<std::string> const& names)
    {
        List list;
        for (std::string const& name : names)
        {
            list.push_back({{"source", name}});
        }
        return list;
    }

    StandardProtocolOutputMap map{8, 5, 65534};
};

TEST_F(NumericIdProtocolOutputBaseTest, NumbersAnEmptyMapFromZero)
{
    EXPECT_EQ(AddAll(Sources({"a", "b"})), done); // also where the range begins at 5

    EXPECT_EQ(Items(), (Ids{{0, "a"}, {1, "b"}}));
    EXPECT_EQ(ArgumentItems(), Items());
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, NumbersOnBehindTheLastId)
{
    PlaceAt({1, 7});

    EXPECT_EQ(AddAll({{{"outputId", 3}, {"source", "a"}}, {{"outputId", 3}, {"source", "b"}}}), done);

    EXPECT_EQ(Items(), (Ids{{1, "s1"}, {7, "s7"}, {8, "a"}, {9, "b"}}));
}

TEST_F(NumericIdProtocolOutputBaseTest, TakesAListOfNothing)
{
    EXPECT_EQ(AddAll({}), done);
    EXPECT_EQ(map.Count(), 0u);
}

TEST_F(NumericIdProtocolOutputBaseTest, TakesAListWithoutArguments)
{
    StandardOutputs list;
    list.map.Add().source.Set("a");

    map.AddAll(list);

    EXPECT_EQ(Items(), (Ids{{0, "a"}}));
}

TEST_F(NumericIdProtocolOutputBaseTest, PassesOverASourceThatItHas)
{
    PlaceAt({0});

    EXPECT_EQ(AddAll(Sources({"a", "s0", "b"})), (Refusal{-987, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{0, "s0"}, {1, "a"}, {2, "b"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{1, "a"}, {2, "s0"}, {2, "b"}})); // the refused one used up no id
    EXPECT_EQ(log.Lines(), (Lines{UserWarning("Data source s0 already exists."),
                                  Warning(ADD_ALL_LABEL, "Data source s0 already exists")}));
}

TEST_F(NumericIdProtocolOutputBaseTest, PassesOverASourceThatTheListHasTwice)
{
    EXPECT_EQ(AddAll(Sources({"a", "a", "b"})), (Refusal{-987, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{0, "a"}, {1, "b"}}));
}

TEST_F(NumericIdProtocolOutputBaseTest, PassesOverAnEmptySource)
{
    EXPECT_EQ(AddAll(Sources({"a", "", "b"})), (Refusal{-997, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{0, "a"}, {1, "b"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{0, "a"}, {1, ""}, {1, "b"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(EMPTY_SOURCE), Error(ADD_ALL_LABEL, EMPTY_SOURCE)}));
}

TEST_F(NumericIdProtocolOutputBaseTest, ThrowsTheLastOfItsRefusals)
{
    EXPECT_EQ(AddAll(Sources({"a", "a", ""})), (Refusal{-997, NOT_ALL}));
    EXPECT_EQ(AddAll(Sources({"", "a"})), (Refusal{-987, NOT_ALL}));
}

TEST_F(NumericIdProtocolOutputBaseTest, HasNoIdsBehindTheLastValidOne)
{
    PlaceAt({65533});

    EXPECT_EQ(AddAll(Sources({"a", "b", "c"})), (Refusal{-997, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{65533, "s65533"}, {65534, "a"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{65534, "a"}, {65535, "b"}, {65535, "c"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(BadId("b")), Error(ADD_ALL_LABEL, BadId("b")), UserError(BadId("c")),
                                  Error(ADD_ALL_LABEL, BadId("c"))}));
}

// The id behind 65535 is 0 in 16 bits. `AddAll` appends without a search, so an item with the id 0 would stand behind
// all others: the map would no longer be sorted, a search would miss items, and two items could have the id 0. The
// order of the map comes first: `AddAll` refuses every entry, as it does for the id 65535 itself.
TEST_F(NumericIdProtocolOutputBaseTest, KeepsItsOrderBehindTheInvalidId)
{
    PlaceAt({0, 65533, 65534});
    EXPECT_EQ(Add({{"outputId", 65533}, {"source", "a"}, {"autoShift", true}}), done);
    EXPECT_EQ(IdsOnly(), (std::vector<int>{0, 65533, 65534, 65535}));

    EXPECT_EQ(AddAll(Sources({"b", "c"})), (Refusal{-997, NOT_ALL}));

    EXPECT_EQ(IdsOnly(), (std::vector<int>{0, 65533, 65534, 65535}));
    EXPECT_EQ(ArgumentItems(), (Ids{{65535, "b"}, {65535, "c"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(BadId("b")), Error(ADD_ALL_LABEL, BadId("b")), UserError(BadId("c")),
                                  Error(ADD_ALL_LABEL, BadId("c"))}));
}

TEST_F(NumericIdProtocolOutputBaseTest, StopsWhenItIsFull)
{
    PlaceAt({0, 1, 2, 3, 4, 5, 6});

    EXPECT_EQ(AddAll(Sources({"s0", "a", "b", "c"})),
              (Refusal{-977, "Connection map is full. All data source(s) from b are not added."}));

    EXPECT_EQ(map.Count(), 8u);
    EXPECT_EQ(map.At(7).source.Get(), "a"); // items added before the refusal stay
    EXPECT_EQ(ArgumentItems(), (Ids{{7, "s0"}, {7, "a"}, {65535, "b"}, {65535, "c"}}));
}

TEST_F(NumericIdProtocolOutputBaseTest, CannotTellAFullMapFromAListThatItHas)
{
    PlaceAt({0, 1, 2, 3, 4, 5, 6, 7});

    EXPECT_EQ(AddAll(Sources({"s0"})),
              (Refusal{-977, "Connection map is full. All data source(s) from s0 are not added."}));
    EXPECT_EQ(AddAll({}), done);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, MakesRoomInARunOfIds)
{
    PlaceAt({1, 2, 3, 4, 7});

    EXPECT_EQ(Add({{"outputId", 3}, {"source", "new"}, {"autoShift", true}}), done);

    EXPECT_EQ(Items(), (Ids{{1, "s1"}, {2, "s2"}, {3, "new"}, {4, "s3"}, {5, "s4"}, {7, "s7"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, MakesNoRoomWithoutLeave)
{
    PlaceAt({1, 2, 3, 4, 7});

    EXPECT_EQ(Add({{"outputId", 3}, {"source", "new"}}), (Refusal{-997, ""}));

    EXPECT_EQ(IdsOnly(), (std::vector<int>{1, 2, 3, 4, 7}));
}

TEST_F(NumericIdProtocolOutputBaseTest, AddsAtAnIndexThatItIsTold)
{
    PlaceAt({1, 2});
    StandardOutputItem item;
    item.outputId.Set(9);
    item.source.Set("new");

    map.OverlapInsert(2, item); // nothing behind it that could shift

    EXPECT_EQ(Items(), (Ids{{1, "s1"}, {2, "s2"}, {9, "new"}}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { map.OverlapInsert(4, item); }), (Refusal{-997, ""}));
    EXPECT_EQ(map.Count(), 3u);
    EXPECT_TRUE(map.IsDataShiftSupported());
}

TEST_F(NumericIdProtocolOutputBaseTest, ClosesGaps)
{
    PlaceAt({3, 5, 65534});

    map.CompactId();

    EXPECT_EQ(Items(), (Ids{{0, "s3"}, {1, "s5"}, {2, "s65534"}}));
    EXPECT_EQ(Remove(1), done); // found under its new id
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, HasNoGapsToCloseWhenEmpty)
{
    map.CompactId();

    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, ShiftsForAnItemThatMoves)
{
    PlaceAt({5, 6, 9});

    EXPECT_EQ(UpdateId(9, 5, true), done);

    EXPECT_EQ(Items(), (Ids{{5, "s9"}, {6, "s5"}, {7, "s6"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(NumericIdProtocolOutputBaseTest, ShiftsNothingOntoTheInvalidIdForAMove)
{
    PlaceAt({1, 65533, 65534});

    EXPECT_EQ(UpdateId(1, 65534, true), (Refusal{-997, TakenId("s1")}));
    EXPECT_EQ(UpdateId(1, 65533, false), (Refusal{-997, TakenId("s1")}));
    EXPECT_EQ(IdsOnly(), (std::vector<int>{1, 65533, 65534}));

    EXPECT_EQ(UpdateId(1, 65533, true), done); // judged by the new id alone, not by the end of the run
    EXPECT_EQ(IdsOnly(), (std::vector<int>{65533, 65534, 65535}));
}

TEST_F(NumericIdProtocolOutputBaseTest, MovesToTheLastValidIdWhenItIsFree)
{
    PlaceAt({1, 2});

    EXPECT_EQ(UpdateId(1, 65534), done);

    EXPECT_EQ(Items(), (Ids{{2, "s2"}, {65534, "s1"}}));
}

} // namespace ZuControl::ControlProtocol
