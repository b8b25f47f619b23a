#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"

#include "Support/OutputMapFixture.h"

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
using Json = nlohmann::json;
std::string const ADD_LABEL = "ZuControl::ControlProtocol::RegisterProtocolOutputMap::Add_Helper";
std::string const ADD_ALL_LABEL = "ZuControl::ControlProtocol::RegisterProtocolOutputMap::AddAll";
std::string const BASE_ADD_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::Add_Helper";
std::string const BASE_UPDATE_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::UpdateId_Helper";
std::string const NOT_ALL =
    "One or more sources could not be added to the connection map. Logs may have additional information.";
Refusal const NO_SIZE{-997, "Register size cannot be zero."};

std::string Overlap(std::string const& source)
{
    return "Unable to add connection source " + source +
           ". The specified address would cause the selected source to overlap addresses used by an existing "
           "connection.";
}

std::string TakenId(std::string const& verb, std::string const& source)
{
    return "Unable to " + verb + source +
           ". The specified address would cause the selected source to overlap addresses used by an existing data "
           "source.";
}

Refusal OutOfRange(int address, int first = 100, int end = 150)
{
    return {-997, "The new entry's address " + std::to_string(address) + " is not within the range [" +
                      std::to_string(first) + " : " + std::to_string(end) + "]"};
}

Json Item(int address, int size, std::string const& source)
{
    return {{"outputId", address}, {"outputSize", size}, {"source", source}};
}

Json Shifting(int address, int size, std::string const& source)
{
    return {{"outputId", address}, {"outputSize", size}, {"source", source}, {"autoShift", true}};
}

Json Sized(int size, std::string const& source)
{
    return {{"outputSize", size}, {"source", source}};
}

} // namespace

class RegisterProtocolOutputMapTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    std::vector<int> Addresses()
    {
        std::vector<int> addresses;
        for (auto const& [id, source] : Items())
        {
            addresses.push_back(id.get<int>());
        }
        return addresses;
    }

    RegisterProtocolOutputMap map{100, 50, 2, 10};
};

TEST_F(RegisterProtocolOutputMapTest, ShowsItsSpaceAndItsItems)
{
    Place({{{"outputId", 100}, {"outputSize", 3}, {"source", "a"}, {"dataOffset", 4}, {"dataLength", 5}}});

    EXPECT_EQ(
        Document(),
        (Json{{"acceptedDataFormats", Json::array()},
              {"map", {{{"outputId", 100}, {"outputSize", 3}, {"source", "a"}, {"dataOffset", 4}, {"dataLength", 5}}}},
              {"attributes", {{"start", 100}, {"count", 50}, {"itemSize", 2}}}}));
}

TEST_F(RegisterProtocolOutputMapTest, DescribesItsRecords)
{
    Json const item = Serializer::SerializeSchema(*map.CreateOutputMapItemArgs()).at("properties");
    Json const list = Serializer::SerializeSchema(*map.CreateOutputsArgs()).at("properties");
    Json const attributes = list.at("attributes").at("properties");

    std::vector<std::pair<std::string, std::string>> const titles = {
        {"outputId", "Id"},       {"outputSize", "Size"},   {"source", "Source"},
        {"dataOffset", "Offset"}, {"dataLength", "Length"}, {"autoShift", "AutoShift"}};
    for (std::size_t i = 0; i < titles.size(); ++i)
    {
        EXPECT_EQ(item.at(titles[i].first).at("title"), titles[i].second);
        EXPECT_EQ(item.at(titles[i].first).at("sortOrder"), 100 * i);
    }
    EXPECT_EQ(list.at("map").at("title"), "OutputMap");
    EXPECT_EQ(list.at("attributes").at("title"), "Attributes");
    EXPECT_EQ(list.at("autoShift").at("title"), "AutoShift");
    EXPECT_EQ(attributes.at("start").at("title"), "Start");
    EXPECT_EQ(attributes.at("count").at("title"), "Count");
    EXPECT_EQ(attributes.at("itemSize").at("title"), "ItemSize");
    EXPECT_EQ(Serializer::Serialize(*map.CreateOutputMapItemArgs()), (Json{{"outputId", 65535},
                                                                           {"outputSize", 0},
                                                                           {"source", ""},
                                                                           {"dataOffset", 0},
                                                                           {"dataLength", 0},
                                                                           {"autoShift", false}}));
}

TEST_F(RegisterProtocolOutputMapTest, WantsRecordsOfItsOwnKind)
{
    RegisterOutputItem const plainItem;
    RegisterOutputs plainList;

    EXPECT_THROW(map.Add(plainItem), std::bad_cast);
    EXPECT_THROW(map.UpdateId(plainList), std::bad_cast);
    map.AddAll(plainList);
    EXPECT_EQ(map.Count(), 0u);
}

TEST_F(RegisterProtocolOutputMapTest, RefusesAnIncompleteItemWithoutAWord)
{
    EXPECT_EQ(Add(Sized(4, "a")), (Refusal{-997, ""}));
    EXPECT_EQ(Add(Item(100, 4, "")), (Refusal{-997, ""}));
    EXPECT_EQ(Add(Item(100, 0, "a")), (Refusal{-997, ""}));

    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, TakesAddressesOfItsSpaceOnly)
{
    EXPECT_EQ(Add(Item(99, 2, "a")), OutOfRange(99));
    EXPECT_EQ(Add(Item(150, 2, "a")), OutOfRange(150));
    EXPECT_EQ(Add(Item(100, 2, "a")), done);
    EXPECT_EQ(Add(Item(149, 2, "b")), done);

    EXPECT_EQ(Addresses(), (std::vector<int>{100, 149}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, NamesTheEndOfASpaceBeyondAllIds)
{
    RegisterProtocolOutputMap wide(65000, 1000, 2, 10);
    RegisterOutputItemArgs item;
    item.outputId.Set(64999);
    item.outputSize.Set(2);
    item.source.Set("a");

    EXPECT_EQ(RefusalOf([&] { wide.Add(item); }), OutOfRange(64999, 65000, 66000));
}

TEST_F(RegisterProtocolOutputMapTest, AddsWhatIsThereAlreadyWithoutAWord)
{
    Json item = Item(110, 4, "a");
    Place({item});

    EXPECT_EQ(Add(item), done);
    item["dataLength"] = 1;
    EXPECT_EQ(Add(item), (Refusal{-987, ""})); // another item with the same source

    EXPECT_EQ(map.Count(), 1u);
    EXPECT_EQ(log.Lines(),
              (Lines{UserWarning("Data source a already exists"), Warning(ADD_LABEL, "Data source a already exists")}));
}

TEST_F(RegisterProtocolOutputMapTest, RefusesAnOverlapWithoutLeaveToShift)
{
    Place({Item(100, 4, "a")});

    EXPECT_EQ(Add(Item(100, 4, "b")), (Refusal{-997, Overlap("b")}));

    EXPECT_EQ(Addresses(), (std::vector<int>{100}));
    EXPECT_EQ(log.Lines(), (Lines{UserWarning(Overlap("b")), Warning(ADD_LABEL, Overlap("b"))}));
}

TEST_F(RegisterProtocolOutputMapTest, RefusesWhatFitsBetweenTwoItemsWithoutLeaveToShift)
{
    Place({Item(100, 4, "a"), Item(120, 4, "b")});

    EXPECT_EQ(Add(Item(110, 4, "c")), (Refusal{-997, Overlap("c")}));

    EXPECT_EQ(log.Lines(), (Lines{UserWarning(Overlap("c")), Warning(ADD_LABEL, Overlap("c"))}));
}

TEST_F(RegisterProtocolOutputMapTest, PutsWhatFitsBetweenTwoItemsOnePlaceEarly)
{
    Place({Item(100, 4, "a"), Item(120, 4, "b")});

    EXPECT_EQ(Add(Shifting(110, 4, "c")), done);

    EXPECT_EQ(Items(), (Ids{{110, "c"}, {100, "a"}, {120, "b"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, MissesItemsThatAreOutOfOrder)
{
    Place({Item(104, 4, "a"), Item(120, 4, "b"), Shifting(110, 4, "c"), Item(100, 4, "d")});
    ASSERT_EQ(Addresses(), (std::vector<int>{100, 110, 104, 120}));

    EXPECT_EQ(Remove(104), (Refusal{-999, ""}));
    EXPECT_EQ(Remove(110), done);
    EXPECT_EQ(Remove(104), done); // in order again
    EXPECT_EQ(Addresses(), (std::vector<int>{100, 120}));
}

TEST_F(RegisterProtocolOutputMapTest, TestsNothingBehindTheLastItem)
{
    Place({Item(100, 20, "a")});

    EXPECT_EQ(Add(Item(101, 4, "b")), done); // although the item before it extends to 109

    EXPECT_EQ(Addresses(), (std::vector<int>{100, 101}));
}

TEST_F(RegisterProtocolOutputMapTest, JudgesHowAnItemMeetsItsNeighbours)
{
    Place({Item(100, 20, "a"), Item(110, 4, "b")});
    RegisterOutputItem item;
    item.outputSize.Set(4);

    // address, flags: an item behind the unscaled end of "a", 120, cannot be before "b"
    for (auto const& [address, flags] : std::vector<std::pair<uint16, int>>{
             {98, 0}, {99, 1}, {100, 1}, {101, 0}, {108, 0}, {109, 1}, {110, 1}, {111, 0}})
    {
        item.outputId.Set(address);
        EXPECT_EQ(map.GetOverlappingState(item), flags) << address;
    }
}

TEST_F(RegisterProtocolOutputMapTest, JudgesThePreviousItemByItsRawSize)
{
    Place({Item(100, 6, "a"), Item(120, 4, "b")});
    RegisterOutputItem item;
    item.outputSize.Set(3); // two registers

    for (auto const& [address, flags] :
         std::vector<std::pair<uint16, int>>{{103, 0}, {105, 0}, {106, 2}, {118, 2}, {119, 3}, {120, 3}, {121, 0}})
    {
        item.outputId.Set(address);
        EXPECT_EQ(map.GetOverlappingState(item), flags) << address;
    }
}

TEST_F(RegisterProtocolOutputMapTest, MovesTheRunBehindANewItem)
{
    Place({Item(102, 4, "a"), Item(104, 4, "b")});

    EXPECT_EQ(Add(Shifting(102, 4, "c")), done);

    EXPECT_EQ(Items(), (Ids{{102, "c"}, {104, "a"}, {106, "b"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, MovesTheNextItemJustFarEnough)
{
    Place({Item(100, 20, "a"), Item(110, 4, "b")});

    EXPECT_EQ(Add(Shifting(109, 4, "c")), done);

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {109, "c"}, {111, "b"}}));
}

TEST_F(RegisterProtocolOutputMapTest, PutsAnItemAheadOfOneThatItLiesBehind)
{
    Place({Item(100, 4, "a"), Item(110, 4, "b")});

    EXPECT_EQ(Add(Shifting(109, 4, "c")), done);

    EXPECT_EQ(Items(), (Ids{{109, "c"}, {111, "a"}, {113, "b"}}));
}

TEST_F(RegisterProtocolOutputMapTest, LeavesWhatLiesBehindAGap)
{
    Place({Item(100, 4, "a"), Item(102, 4, "b"), Item(105, 2, "c")});

    EXPECT_EQ(Add(Shifting(100, 2, "d")), done);

    EXPECT_EQ(Items(), (Ids{{100, "d"}, {101, "a"}, {103, "b"}, {105, "c"}}));
}

TEST_F(RegisterProtocolOutputMapTest, CountsAnItemThatIsNotWholeAsAWholeRegister)
{
    EXPECT_EQ(AddAll({Sized(3, "a"), Sized(1, "b"), Sized(4, "c")}), done);

    EXPECT_EQ(Addresses(), (std::vector<int>{100, 102, 103}));
}

TEST_F(RegisterProtocolOutputMapTest, RefusesWhatDoesNotFitTheEndOfItsSpace)
{
    EXPECT_EQ(Add(Item(149, 3, "a")), (Refusal{-977, ""}));
    EXPECT_EQ(Add(Item(149, 2, "a")), done);

    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, EstimatesTheRoomByTheLengthOfTheNewItemAlone)
{
    Place({Item(140, 2, "a"), Item(141, 2, "b")});

    EXPECT_EQ(Add(Shifting(140, 8, "c")), (Refusal{-977, ""})); // counts three times four registers, and ten are free
    EXPECT_EQ(Add(Shifting(140, 6, "c")), done);                // counts three times three
    EXPECT_EQ(Add(Shifting(140, 2, "d")), done);

    EXPECT_EQ(Items(), (Ids{{140, "d"}, {141, "c"}, {144, "a"}, {145, "b"}}));
}

TEST_F(RegisterProtocolOutputMapTest, FindsThatItIsFullAfterAllOtherTests)
{
    RegisterProtocolOutputMap small(100, 50, 2, 1);
    RegisterOutputItemArgs item;
    item.outputId.Set(100);
    item.outputSize.Set(2);
    item.source.Set("a");
    small.Add(item);
    item.outputId.Set(120);

    EXPECT_EQ(RefusalOf([&] { small.Add(item); }), (Refusal{-987, ""}));
    item.source.Set("b");
    EXPECT_EQ(RefusalOf([&] { small.Add(item); }), (Refusal{-977, ""}));
    EXPECT_EQ(small.Count(), 1u);
}

TEST_F(RegisterProtocolOutputMapTest, PlacesAListOneBehindTheOther)
{
    EXPECT_EQ(AddAll({Sized(4, "a"), Sized(4, "b"), Sized(2, "c")}), done);

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {102, "b"}, {104, "c"}}));
    EXPECT_EQ(ArgumentItems(), Items());
    EXPECT_EQ(AddAll({Sized(2, "d")}), done);
    EXPECT_EQ(Addresses(), (std::vector<int>{100, 102, 104, 105}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, PlacesAListBeyondItsSpace)
{
    EXPECT_EQ(AddAll({Sized(90, "a"), Sized(0, "b"), Sized(90, "c"), Sized(0, "d")}), done);

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {145, "b"}, {145, "c"}, {190, "d"}}));
}

TEST_F(RegisterProtocolOutputMapTest, CannotTakeBackOneByOneWhatAListPlacedBeyondItsSpace)
{
    EXPECT_EQ(Add(Item(100, 90, "a")), done);
    EXPECT_EQ(Add(Item(145, 90, "b")), (Refusal{-977, ""}));
    EXPECT_EQ(Add(Item(190, 90, "c")), OutOfRange(190));
}

TEST_F(RegisterProtocolOutputMapTest, PassesOverWhatItCannotPlace)
{
    std::string const empty =
        "Data source  in the list of sources to add is invalid. Please correct the data source and try again.";
    Place({Item(100, 4, "a")});

    EXPECT_EQ(AddAll({Sized(2, "b"), Sized(2, "a"), Sized(2, ""), Item(7, 2, "a"), Sized(2, "c")}),
              (Refusal{-987, NOT_ALL})); // the last refusal

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {102, "b"}, {103, "c"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{102, "b"}, {65535, "a"}, {65535, ""}, {7, "a"}, {103, "c"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserWarning("Data source a already exists"),
                                  Warning(ADD_ALL_LABEL, "Data source a already exists"), UserError(empty),
                                  Error(ADD_ALL_LABEL, empty), UserWarning("Data source a already exists"),
                                  Warning(ADD_ALL_LABEL, "Data source a already exists")}));
}

TEST_F(RegisterProtocolOutputMapTest, StopsAListWhenItIsFull)
{
    List list;
    for (int i = 0; i < 12; ++i)
    {
        list.push_back(Sized(2, "s" + std::to_string(i)));
    }

    EXPECT_EQ(AddAll(list), (Refusal{-977, "Connection map is full. All data source(s) from s10 are not added."}));

    EXPECT_EQ(map.Count(), 10u);
    EXPECT_EQ(map.At(9).outputId.Get(), 109);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, RefusesARegisterOfNoSizeWhenItCountsRegisters)
{
    RegisterProtocolOutputMap sizeless(100, 50, 0, 10);
    RegisterOutputItemArgs item;
    item.outputId.Set(100);
    item.outputSize.Set(2);
    item.source.Set("a");

    EXPECT_EQ(RefusalOf([&] { sizeless.Add(item); }), NO_SIZE);
    EXPECT_EQ(sizeless.Count(), 0u);

    RegisterOutputs list;
    list.map.Add().source.Set("b");
    list.map.Add().source.Set("c");
    EXPECT_EQ(RefusalOf([&] { sizeless.AddAll(list); }), NO_SIZE);
    EXPECT_EQ(sizeless.DataSourceList(), (std::vector<std::string>{"b"})); // added before its size is needed
    EXPECT_EQ(list.map.At(1).outputId.Get(), 65535);

    EXPECT_EQ(RefusalOf([&] { sizeless.AddAll(list); }), NO_SIZE);
    EXPECT_EQ(sizeless.Count(), 1u);
    EXPECT_EQ(RefusalOf([&] { sizeless.CompactId(); }), NO_SIZE);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, ClosesGaps)
{
    Place({Item(100, 4, "a"), Item(110, 2, "b"), Item(140, 2, "c")});

    map.CompactId();

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {102, "b"}, {103, "c"}}));
    EXPECT_EQ(Remove(102), done); // found under its new address
}

TEST_F(RegisterProtocolOutputMapTest, MovesItsWholeSpace)
{
    Place({Item(100, 4, "a"), Item(110, 2, "b")});

    map.SetStartAddress(200);

    EXPECT_EQ(map.StartAddress(), 200);
    EXPECT_EQ(Addresses(), (std::vector<int>{200, 210}));
    EXPECT_EQ(Add(Item(149, 2, "c")), OutOfRange(149, 200, 250));
    EXPECT_EQ(Add(Item(249, 2, "c")), done);
    EXPECT_EQ(Document().at("attributes").at("start"), 200);

    map.SetStartAddress(200);
    EXPECT_EQ(Addresses(), (std::vector<int>{200, 210, 249}));
    map.CompactId(); // from the start address of the constructor on
    EXPECT_EQ(Addresses(), (std::vector<int>{100, 102, 103}));
}

TEST_F(RegisterProtocolOutputMapTest, FillsAnEmptyMapFromTheStartThatItWasMadeWith)
{
    map.SetStartAddress(200);

    EXPECT_EQ(AddAll({Sized(4, "a"), Sized(4, "b")}), done);

    EXPECT_EQ(Addresses(), (std::vector<int>{100, 102}));
}

TEST_F(RegisterProtocolOutputMapTest, MovesItsSpaceInSixteenBits)
{
    Place({Item(100, 4, "a"), Item(110, 2, "b")});

    map.SetStartAddress(65530);
    EXPECT_EQ(Addresses(), (std::vector<int>{65530, 4}));
    map.SetStartAddress(90);
    EXPECT_EQ(Addresses(), (std::vector<int>{90, 100}));
}

TEST_F(RegisterProtocolOutputMapTest, WantsAnOldAndANewAddressWithoutAWord)
{
    EXPECT_EQ(UpdateList({Item(100, 2, "a")}), (Refusal{-997, ""}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, TestsTheNewAddressBeforeAllElse)
{
    EXPECT_EQ(UpdateId(65535, 150), OutOfRange(150));
    EXPECT_EQ(UpdateId(99, 99), OutOfRange(99));
    EXPECT_EQ(UpdateId(100, 65535), OutOfRange(65535));
    EXPECT_EQ(log.Lines(), noLines);

    EXPECT_EQ(UpdateId(120, 120), done);
    EXPECT_EQ(UpdateId(65535, 120), (Refusal{-997, "Output id is invalid."}));
    EXPECT_EQ(UpdateId(110, 120), (Refusal{-999, ""}));
}

TEST_F(RegisterProtocolOutputMapTest, MovesAnItemToItsRightPlace)
{
    Place({Item(100, 4, "a"), Item(120, 4, "b"), Item(140, 4, "c")});

    EXPECT_EQ(UpdateId(140, 110), done);

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {110, "c"}, {120, "b"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, MovesAnItemIntoAnotherThatLiesBehindIt)
{
    Place({Item(100, 4, "a"), Item(110, 4, "b"), Item(130, 4, "c")});

    EXPECT_EQ(UpdateId(130, 109), done); // behind "a" and into "b": with both flags the map does not refuse

    EXPECT_EQ(Items(), (Ids{{100, "a"}, {109, "c"}, {110, "b"}}));
}

TEST_F(RegisterProtocolOutputMapTest, LosesAnItemThatMeetsAnotherOnceItIsTakenOut)
{
    Place({Item(100, 4, "a"), Item(120, 2, "b")});

    EXPECT_EQ(UpdateId(100, 119), (Refusal{-997, ""}));

    EXPECT_EQ(Items(), (Ids{{120, "b"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{100, ""}, {119, "a"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(TakenId("add data source ", "a")),
                                  Error(BASE_ADD_LABEL, TakenId("add data source ", "a"))}));
    EXPECT_EQ(Add(Item(100, 4, "a")), done); // its source is free again
}

TEST_F(RegisterProtocolOutputMapTest, LetsAnItemRunIntoItself)
{
    Place({Item(102, 4, "a")});

    EXPECT_EQ(UpdateId(102, 101), (Refusal{-997, TakenId("update output id for data source ", "[a]")}));

    EXPECT_EQ(Items(), (Ids{{102, "a"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError(TakenId("update output id for data source ", "a")),
                                  Error(BASE_UPDATE_LABEL, TakenId("update output id for data source ", "[a]"))}));
    EXPECT_EQ(UpdateId(102, 101, true), done);
    EXPECT_EQ(Items(), (Ids{{101, "a"}}));
}

TEST_F(RegisterProtocolOutputMapTest, ShiftsForAnItemThatMoves)
{
    Place({Item(102, 4, "a"), Item(104, 4, "b"), Item(110, 4, "c")});

    EXPECT_EQ(UpdateId(110, 102, true), done);

    EXPECT_EQ(Items(), (Ids{{102, "c"}, {104, "a"}, {106, "b"}}));
}

TEST_F(RegisterProtocolOutputMapTest, LosesAnItemThatHasNoRoomWhereItMoves)
{
    Place({Item(100, 40, "a"), Item(148, 2, "b")});

    EXPECT_EQ(UpdateId(100, 148, true), (Refusal{-977, ""}));

    EXPECT_EQ(Items(), (Ids{{148, "b"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(RegisterProtocolOutputMapTest, MovesAnItemBehindTheLastWithoutATestForRoom)
{
    Place({Item(100, 40, "a"), Item(120, 2, "b")});

    EXPECT_EQ(UpdateId(100, 149), done); // twenty registers, one of them in the space

    EXPECT_EQ(Items(), (Ids{{120, "b"}, {149, "a"}}));
}

} // namespace ZuControl::ControlProtocol
