#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"

#include "Support/Latch.h"
#include "Support/OutputMapFixture.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <cstring>
#include <thread>
#include <typeinfo>

namespace ZuControl::ControlProtocol
{

using ZuTest::Error;
using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::UserError;
using ZuTest::UserWarning;
using ZuTest::Warning;

namespace
{

using Lines = std::vector<LogLine>;
char const* const ADD_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::Add_Helper";
char const* const UPDATE_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::UpdateId_Helper";

/// The text of a refusal for a taken id; `verb` and `source` make its three variants.
std::string Taken(std::string const& verb, std::string const& source)
{
    return "Unable to " + verb + source +
           ". The specified address would cause the selected source to overlap addresses used by an existing data "
           "source.";
}

using StandardBase =
    ProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs, StandardOutputItemArgs>;
using TextBase = ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                    TextIdStandardOutputItemArgs>;

/// A kind of map as a plug-in may define it: numeric ids that cannot shift.
struct OwnOutputs final : public StandardOutputs
{
};

class OwnMap final
    : public ProtocolOutputBase<OwnOutputs, StandardOutputItem, StandardOutputsArgs, StandardOutputItemArgs>
{
public:
    using ProtocolOutputBase::ProtocolOutputBase;

    void AddAll(Zu::Params::Group&) override
    {
    }
};

/// The slot of an operation in the virtual table that plug-ins call through, read from the pointer to member.
template <typename Operation>
std::ptrdiff_t SlotOf(Operation operation)
{
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

} // namespace

class ProtocolOutputBaseTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    StandardProtocolOutputMap map{4, 0, 65534};
    IProtocolOutput const& readable = map;
};

TEST_F(ProtocolOutputBaseTest, IsEmptyAtFirst)
{
    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(Items(), Ids{});
    EXPECT_EQ(map.DataSourceList(), std::vector<std::string>{});
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, KeepsItsItemsSortedById)
{
    Place({{{"outputId", 7}, {"source", "g"}}, {{"outputId", 1}, {"source", "a"}}, {{"outputId", 4}, {"source", "d"}}});

    EXPECT_EQ(Items(), (Ids{{1, "a"}, {4, "d"}, {7, "g"}}));
    EXPECT_EQ(map.DataSourceList(), (std::vector<std::string>{"a", "d", "g"}));
    EXPECT_EQ(map.Count(), 3u);
    EXPECT_EQ(map.At(1).source.Get(), "d");
}

TEST_F(ProtocolOutputBaseTest, AddsWhatIsThereAlreadyWithoutAWord)
{
    Place({{{"outputId", 3}, {"source", "a"}}});

    EXPECT_EQ(Add({{"outputId", 3}, {"source", "a"}, {"autoShift", true}}), done);

    EXPECT_EQ(Items(), (Ids{{3, "a"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, RefusesASourceThatItHas)
{
    Place({{{"outputId", 3}, {"source", "a"}}});

    EXPECT_EQ(Add({{"outputId", 4}, {"source", "a"}}), (Refusal{-987, ""}));

    EXPECT_EQ(Items(), (Ids{{3, "a"}}));
    EXPECT_EQ(log.Lines(),
              (Lines{UserWarning("Data source a already exists"), Warning(ADD_LABEL, "Data source a already exists")}));
}

TEST_F(ProtocolOutputBaseTest, TellsSourcesApartByEachByte)
{
    std::string const withNull("a\0b", 3);

    Place(
        {{{"outputId", 0}, {"source", "a"}}, {{"outputId", 1}, {"source", "A"}}, {{"outputId", 2}, {"source", "ab"}}});

    EXPECT_EQ(Add({{"outputId", 3}, {"source", withNull}}), done);
    EXPECT_EQ(Add({{"outputId", 4}, {"source", withNull}}), (Refusal{-987, ""}));
}

TEST_F(ProtocolOutputBaseTest, RefusesAnIncompleteItem)
{
    EXPECT_EQ(Add({{"source", "a"}}), (Refusal{-997, ""}));
    EXPECT_EQ(Add({{"outputId", 3}}), (Refusal{-997, ""}));

    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(log.Lines(), (Lines{UserError("Data source a is invalid"), Error(ADD_LABEL, "Data source a is invalid"),
                                  UserError("Data source  is invalid"), Error(ADD_LABEL, "Data source  is invalid")}));
}

TEST_F(ProtocolOutputBaseTest, NamesASourceWithPercentSignsAsItIs)
{
    EXPECT_EQ(Add({{"source", "100%s%n"}}), (Refusal{-997, ""}));

    EXPECT_EQ(log.Lines(),
              (Lines{UserError("Data source 100%s%n is invalid"), Error(ADD_LABEL, "Data source 100%s%n is invalid")}));
}

TEST_F(ProtocolOutputBaseTest, RefusesATakenIdWithoutLeaveToShift)
{
    Place({{{"outputId", 3}, {"source", "a"}}});

    EXPECT_EQ(Add({{"outputId", 3}, {"source", "b"}}), (Refusal{-997, ""}));

    EXPECT_EQ(Items(), (Ids{{3, "a"}}));
    EXPECT_EQ(log.Lines(),
              (Lines{UserError(Taken("add data source ", "b")), Error(ADD_LABEL, Taken("add data source ", "b"))}));
}

TEST_F(ProtocolOutputBaseTest, FindsThatItIsFullAfterAllOtherTests)
{
    Place({{{"outputId", 1}, {"source", "a"}},
           {{"outputId", 2}, {"source", "b"}},
           {{"outputId", 3}, {"source", "c"}},
           {{"outputId", 4}, {"source", "d"}}});

    EXPECT_EQ(Add({{"outputId", 1}, {"source", "a"}}), done);
    EXPECT_EQ(Add({{"outputId", 9}, {"source", ""}}).status, -997);
    EXPECT_EQ(Add({{"outputId", 9}, {"source", "a"}}).status, -987);
    EXPECT_EQ(Add({{"outputId", 1}, {"source", "e"}}).status, -997);
    log.Clear();
    EXPECT_EQ(Add({{"outputId", 9}, {"source", "e"}}), (Refusal{-977, ""}));
    EXPECT_EQ(Add({{"outputId", 1}, {"source", "e"}, {"autoShift", true}}), (Refusal{-977, ""}));

    EXPECT_EQ(Items(), (Ids{{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, HoldsNothingWhenItMayHoldNothing)
{
    StandardProtocolOutputMap none(0, 0, 0);
    StandardOutputItemArgs item;
    item.outputId.Set(1);
    item.source.Set("a");

    EXPECT_EQ(RefusalOf([&] { none.Add(item); }), (Refusal{-977, ""}));
    EXPECT_EQ(none.Count(), 0u);
}

TEST_F(ProtocolOutputBaseTest, RemovesByIdAlone)
{
    Place({{{"outputId", 1}, {"source", "a"}}, {{"outputId", 2}, {"source", "b"}}});
    StandardOutputItem other; // a plain item is sufficient; its source has no effect
    other.outputId.Set(1);
    other.source.Set("b");

    EXPECT_EQ(RefusalOf([&] { map.Remove(other); }), done);

    EXPECT_EQ(Items(), (Ids{{2, "b"}}));
    EXPECT_EQ(Add({{"outputId", 3}, {"source", "a"}}), done); // its source is free again
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, RefusesToRemoveWhatItDoesNotHave)
{
    Place({{{"outputId", 2}, {"source", "b"}}});

    EXPECT_EQ(Remove(1), (Refusal{-999, ""}));
    EXPECT_EQ(Remove(3), (Refusal{-999, ""}));
    EXPECT_EQ(Remove(65535), (Refusal{-997, ""}));

    EXPECT_EQ(map.Count(), 1u);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, RefusesAnIndexBehindTheLastItem)
{
    Place({{{"outputId", 2}, {"source", "b"}}});

    EXPECT_EQ(RefusalOf([&] { readable.At(1); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { readable.At(2); }), (Refusal{-997, ""}));
    EXPECT_EQ(&readable.At(0), &map.At(0));
}

TEST_F(ProtocolOutputBaseTest, ForgetsAllWhenCleared)
{
    Place({{{"outputId", 2}, {"source", "b"}}, {{"outputId", 3}, {"source", "c"}}});

    map.Clear();

    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(Items(), Ids{});
    EXPECT_EQ(Add({{"outputId", 3}, {"source", "b"}}), done);
    EXPECT_EQ(Items(), (Ids{{3, "b"}}));
}

TEST_F(ProtocolOutputBaseTest, GivesNewArgumentRecords)
{
    EXPECT_EQ(Serializer::Serialize(*map.CreateOutputMapItemArgs()),
              (Json{{"outputId", 65535}, {"source", ""}, {"autoShift", false}}));
    EXPECT_EQ(Serializer::Serialize(*map.CreateOutputsArgs()),
              (Json{{"acceptedDataFormats", Json::array()},
                    {"map", Json::array()},
                    {"attributes", {{"outputIdMin", 0}, {"outputIdMax", 0}}},
                    {"autoShift", false}}));
    EXPECT_NE(map.CreateOutputsArgs(), map.CreateOutputsArgs());
}

TEST_F(ProtocolOutputBaseTest, WantsRecordsOfItsOwnKind)
{
    StandardOutputItem const plainItem;
    TextIdStandardOutputItemArgs otherItem;
    TextIdStandardOutputsArgs otherList;
    StandardOutputs plainList;

    EXPECT_THROW(map.Add(plainItem), std::bad_cast); // without the member that says whether items may shift
    EXPECT_THROW(map.Add(otherItem), std::bad_cast);
    EXPECT_THROW(map.Remove(otherItem), std::bad_cast);
    EXPECT_THROW(map.AddAll(otherList), std::bad_cast);
    EXPECT_THROW(map.UpdateId(plainList), std::bad_cast);
    EXPECT_THROW(map.GetOverlappingState(otherItem), std::bad_cast);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, ShowsItsRecordUnderTheLockOnly)
{
    EXPECT_EQ(RefusalOf([&] { readable.OutputMap(); }), (Refusal{-1000, ""}));
    map.BeginLock();
    EXPECT_EQ(RefusalOf([&] { readable.OutputMap(); }), done);
    map.EndLock();
    EXPECT_EQ(RefusalOf([&] { readable.OutputMap(); }), (Refusal{-1000, ""}));
}

TEST_F(ProtocolOutputBaseTest, KeepsOneMarkForAllLevelsOfItsLock)
{
    map.BeginLock();
    map.BeginLock();
    map.EndLock();
    EXPECT_EQ(RefusalOf([&] { readable.OutputMap(); }), (Refusal{-1000, ""}));
    map.EndLock();

    EXPECT_EQ(RefusalOf([&] { map.EndLock(); }), (Refusal{-1000, ""})); // thrown by the lock
}

TEST_F(ProtocolOutputBaseTest, LetsItsHolderUseAllOperations)
{
    map.BeginLock();
    EXPECT_EQ(Add({{"outputId", 3}, {"source", "a"}}), done);
    EXPECT_EQ(UpdateId(3, 5), done);
    EXPECT_EQ(map.At(0).outputId.Get(), 5);
    map.CompactId();
    EXPECT_EQ(Remove(0), done);
    map.Clear();
    EXPECT_EQ(RefusalOf([&] { readable.OutputMap(); }), done);
    map.EndLock();
}

TEST_F(ProtocolOutputBaseTest, CountsWithoutItsLock)
{
    Place({{{"outputId", 2}, {"source", "b"}}});
    ZuTest::Latch held;
    ZuTest::Latch counted;
    std::thread holder([&] {
        map.BeginLock();
        held.Open();
        EXPECT_TRUE(counted.Wait());
        map.EndLock();
    });

    EXPECT_TRUE(held.Wait());
    EXPECT_EQ(map.Count(), 1u);
    counted.Open();
    holder.join();
}

TEST_F(ProtocolOutputBaseTest, TakesChangesFromSeveralThreads)
{
    StandardProtocolOutputMap shared(1000, 0, 65534);
    auto const change = [&shared](uint16 first) {
        for (uint16 i = 0; i < 100; ++i)
        {
            StandardOutputItemArgs item;
            item.outputId.Set(static_cast<uint16>(first + 2 * i));
            item.source.Set(std::to_string(first + 2 * i));
            shared.Add(item);
            if (i % 4 == 3)
            {
                shared.Remove(item);
            }
        }
    };
    std::thread even(change, uint16{0});
    std::thread odd(change, uint16{1});
    for (int reads = 0; reads < 200; ++reads)
    {
        EXPECT_LE(shared.Count(), 152u);
        EXPECT_LE(shared.DataSourceList().size(), 152u);
    }
    even.join();
    odd.join();

    EXPECT_EQ(shared.Count(), 150u);
    for (uint64 i = 1; i < shared.Count(); ++i)
    {
        EXPECT_LT(shared.At(i - 1).outputId.Get(), shared.At(i).outputId.Get());
    }
}

TEST_F(ProtocolOutputBaseTest, LeavesItsElementsWhereTheyAreWhenAnItemComesBetween)
{
    Place({{{"outputId", 2}, {"source", "b"}}, {{"outputId", 3}, {"source", "c"}}});
    StandardOutputItem const* const first = &map.At(0);

    Place({{{"outputId", 1}, {"source", "a"}}});

    EXPECT_EQ(&map.At(0), first);
    EXPECT_EQ(first->source.Get(), "a");
    EXPECT_EQ(Items(), (Ids{{1, "a"}, {2, "b"}, {3, "c"}}));
}

TEST_F(ProtocolOutputBaseTest, TellsAFreeIdFromATakenOne)
{
    Place({{{"outputId", 2}, {"source", "b"}}});
    StandardOutputItem item;
    item.source.Set("b");

    for (auto const& [id, state] : std::vector<std::pair<uint16, int>>{{1, 0}, {2, 1}, {3, 0}})
    {
        item.outputId.Set(id);
        EXPECT_EQ(map.GetOverlappingState(item), state) << id;
    }
    EXPECT_TRUE(map.IsDuplicateDataSource(item));
    item.source.Set("c");
    EXPECT_FALSE(map.IsDuplicateDataSource(item));
}

TEST_F(ProtocolOutputBaseTest, FindsTheIndexWhereAnIdIsOrBelongs)
{
    Place({{{"outputId", 2}, {"source", "b"}}, {{"outputId", 4}, {"source", "d"}}, {{"outputId", 6}, {"source", "f"}}});
    StandardOutputItem item;

    for (auto const& [id, index] : std::vector<std::pair<uint16, uint64>>{
             {0, 0}, {1, 0}, {2, 0}, {3, 1}, {4, 1}, {5, 2}, {6, 2}, {7, 3}, {65535, 3}})
    {
        item.outputId.Set(id);
        EXPECT_EQ(map.BSearchForInsert(item), index) << id;
    }
    map.Clear();
    EXPECT_EQ(map.BSearchForInsert(item), 0u);
}

TEST_F(ProtocolOutputBaseTest, MovesAnItemToAFreeId)
{
    Place({{{"outputId", 1}, {"source", "a"}}, {{"outputId", 2}, {"source", "b"}}});

    EXPECT_EQ(UpdateId(1, 7), done);

    EXPECT_EQ(Items(), (Ids{{2, "b"}, {7, "a"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{1, ""}, {7, "a"}})); // the second argument now describes the moved item
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, WantsAnOldAndANewId)
{
    auto const counted = [](std::string const& number) {
        return Refusal{-997, "There should be exactly 2 output id entries but there are " + number +
                                 ". The first output id should contain the original id to change from and the second "
                                 "output id should contain the new id to change to."};
    };
    Json const item = {{"outputId", 1}};

    EXPECT_EQ(UpdateList({}), counted("0"));
    EXPECT_EQ(UpdateList({item}), counted("1"));
    EXPECT_EQ(UpdateList({item, item, item}), counted("3"));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, WantsBothIdsToBeGiven)
{
    Refusal const invalid{-997, "Output id is invalid."};

    EXPECT_EQ(UpdateId(65535, 1), invalid);
    EXPECT_EQ(UpdateId(1, 65535), invalid);
    EXPECT_EQ(UpdateId(65535, 65535), invalid);

    LogLine const line = UserError("Output id is invalid.");
    EXPECT_EQ(log.Lines(), (Lines{line, line, line}));
}

TEST_F(ProtocolOutputBaseTest, HasNothingToDoForEqualIds)
{
    EXPECT_EQ(UpdateId(5, 5), done); // succeeds although the map has no id 5

    EXPECT_EQ(ArgumentItems(), (Ids{{5, ""}, {5, ""}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, RefusesToMoveWhatItDoesNotHave)
{
    Place({{{"outputId", 2}, {"source", "b"}}});

    EXPECT_EQ(UpdateId(1, 2), (Refusal{-999, ""})); // whether the new id is taken or not
    EXPECT_EQ(UpdateId(1, 3), (Refusal{-999, ""}));

    EXPECT_EQ(Items(), (Ids{{2, "b"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseTest, RefusesToMoveOntoATakenIdWithoutLeaveToShift)
{
    Place({{{"outputId", 1}, {"source", "a"}}, {{"outputId", 2}, {"source", "b"}}});

    EXPECT_EQ(UpdateId(1, 2), (Refusal{-997, Taken("update output id for data source ", "[a]")}));

    EXPECT_EQ(Items(), (Ids{{1, "a"}, {2, "b"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(Taken("update output id for data source ", "a")),
                                  Error(UPDATE_LABEL, Taken("update output id for data source ", "[a]"))}));
}

TEST_F(ProtocolOutputBaseTest, DescribesItsRecord)
{
    map.BeginLock();
    Json const schema = Serializer::SerializeSchema(map.OutputMap()).at("properties");
    map.EndLock();
    Json const item = Serializer::SerializeSchema(*map.CreateOutputMapItemArgs()).at("properties");
    Json const list = Serializer::SerializeSchema(*map.CreateOutputsArgs()).at("properties");

    EXPECT_EQ(schema.at("acceptedDataFormats").at("title"), "Accepted Data Formats");
    EXPECT_EQ(schema.at("acceptedDataFormats").at("sortOrder"), 0);
    EXPECT_EQ(schema.at("map").at("title"), "OutputMap");
    EXPECT_EQ(schema.at("map").at("sortOrder"), 100);
    EXPECT_EQ(schema.at("attributes").at("title"), "Attributes");
    EXPECT_EQ(schema.at("attributes").at("sortOrder"), 200);
    EXPECT_EQ(schema.at("attributes").at("properties").at("outputIdMin").at("title"), "Minimum Output Id");
    EXPECT_EQ(schema.at("attributes").at("properties").at("outputIdMax").at("title"), "Maximum Output Id");
    EXPECT_EQ(item.at("outputId").at("title"), "Id");
    EXPECT_EQ(item.at("source").at("title"), "Source");
    EXPECT_EQ(item.at("autoShift").at("title"), "AutoShift");
    EXPECT_EQ(item.at("autoShift").at("sortOrder"), 200);
    EXPECT_EQ(list.at("autoShift").at("title"), "AutoShift");
    EXPECT_EQ(list.at("autoShift").at("sortOrder"), 300);
}

class ProtocolOutputBaseOwnTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    OwnMap map{4};
    Refusal const noOverlap{-996, "Overlap of output id not supported"};
};

TEST_F(ProtocolOutputBaseOwnTest, LeavesShiftsToTheKind)
{
    Place({{{"outputId", 3}, {"source", "a"}}});
    StandardOutputItem item;

    EXPECT_FALSE(map.IsDataShiftSupported());
    EXPECT_EQ(RefusalOf([&] { map.OverlapInsert(0, item); }), noOverlap);
    EXPECT_EQ(Add({{"outputId", 3}, {"source", "b"}}), noOverlap);
    EXPECT_EQ(Add({{"outputId", 3}, {"source", "b"}, {"autoShift", true}}), noOverlap);
    map.CompactId();

    EXPECT_EQ(Items(), (Ids{{3, "a"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ProtocolOutputBaseOwnTest, MovesAnItemToAFreeIdOnly)
{
    Place({{{"outputId", 3}, {"source", "a"}}, {{"outputId", 4}, {"source", "b"}}});

    EXPECT_EQ(UpdateId(3, 4, true), (Refusal{-980, ""}));
    EXPECT_EQ(UpdateId(7, 4, true), (Refusal{-980, ""})); // detected before the search for the old id
    EXPECT_EQ(UpdateId(7, 8, true), (Refusal{-999, ""}));
    EXPECT_EQ(UpdateId(3, 65534, true), done);

    EXPECT_EQ(Items(), (Ids{{4, "b"}, {65534, "a"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST(ProtocolOutputBaseSlotsTest, AreWherePluginsCallThem)
{
    EXPECT_EQ(SlotOf(&IProtocolOutput::BeginLock), 2); // after the two slots of the destructor
    EXPECT_EQ(SlotOf(&IProtocolOutput::EndLock), 3);
    EXPECT_EQ(SlotOf(&IProtocolOutput::OutputMap), 4);
    EXPECT_EQ(SlotOf(&IProtocolOutput::CreateOutputMapItemArgs), 5);
    EXPECT_EQ(SlotOf(&IProtocolOutput::CreateOutputsArgs), 6);
    EXPECT_EQ(SlotOf(&IProtocolOutput::Add), 7);
    EXPECT_EQ(SlotOf(&IProtocolOutput::AddAll), 8);
    EXPECT_EQ(SlotOf(&IProtocolOutput::Remove), 9);
    EXPECT_EQ(SlotOf(&IProtocolOutput::Count), 10);
    EXPECT_EQ(SlotOf(&IProtocolOutput::At), 11);
    EXPECT_EQ(SlotOf(&IProtocolOutput::Clear), 12);
    EXPECT_EQ(SlotOf(&IProtocolOutput::DataSourceList), 13);
    EXPECT_EQ(SlotOf(&IProtocolOutput::CompactId), 14);
    EXPECT_EQ(SlotOf(&IProtocolOutput::UpdateId), 15);
    EXPECT_EQ(SlotOf(&StandardBase::OverlapInsert), 16);
    EXPECT_EQ(SlotOf(&StandardBase::GetOverlappingState), 17);
    EXPECT_EQ(SlotOf(&StandardBase::IsDataShiftSupported), 18);
    EXPECT_EQ(SlotOf(&StandardBase::At), 11);
    EXPECT_EQ(SlotOf(&TextBase::OverlapInsert), 16);
}

} // namespace ZuControl::ControlProtocol
