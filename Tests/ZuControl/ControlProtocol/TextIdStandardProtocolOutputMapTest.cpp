#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "Support/OutputMapFixture.h"
#include "ZuApi/Threads/Locker.h"

#include <stdexcept>
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
std::string const ADD_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::Add_Helper";
std::string const SHIFT_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::ShiftOutputMap";
std::string const OVERLAP_LABEL = "ZuControl::ControlProtocol::ProtocolOutputBase::OverlapInsert";
std::string const ADD_ALL_LABEL = "ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap::AddAll";
std::string const NOT_ALL =
    "One or more sources could not be added to the connection map. Logs may have additional information.";
Refusal const NO_OVERLAP{-996, "Overlap of output id not supported"};

} // namespace

class TextIdStandardProtocolOutputMapTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    /// The log lines, without the source locations in back traces.
    Lines LinesWithoutPlaces() const
    {
        Lines lines = log.Lines();
        for (LogLine& line : lines)
        {
            if (line.text.starts_with("back trace "))
            {
                line.text.resize(line.text.find(':'));
            }
        }
        return lines;
    }

    TextIdStandardProtocolOutputMap map{4};
};

TEST_F(TextIdStandardProtocolOutputMapTest, SortsItsIdsAsBytes)
{
    Place({{{"outputId", "aa"}, {"source", "1"}},
           {{"outputId", "\xC3\xA4"}, {"source", "2"}},
           {{"outputId", "B"}, {"source", "3"}},
           {{"outputId", "a"}, {"source", "4"}}});

    EXPECT_EQ(Items(), (Ids{{"B", "3"}, {"a", "4"}, {"aa", "1"}, {"\xC3\xA4", "2"}}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, ShowsItsItemsWithoutAttributes)
{
    Place({{{"outputId", "a"}, {"source", "s"}, {"autoShift", true}}});

    EXPECT_EQ(Document(),
              (Json{{"acceptedDataFormats", Json::array()}, {"map", {{{"outputId", "a"}, {"source", "s"}}}}}));
    EXPECT_EQ(Serializer::Serialize(*map.CreateOutputMapItemArgs()),
              (Json{{"outputId", ""}, {"source", ""}, {"autoShift", false}}));
    EXPECT_EQ(Serializer::Serialize(*map.CreateOutputsArgs()),
              (Json{{"acceptedDataFormats", Json::array()}, {"map", Json::array()}}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, DescribesItsRecords)
{
    Json const item = Serializer::SerializeSchema(*map.CreateOutputMapItemArgs()).at("properties");

    EXPECT_EQ(item.at("outputId").at("title"), "Id");
    EXPECT_EQ(item.at("outputId").at("type"), "string");
    EXPECT_EQ(item.at("source").at("title"), "Source");
    EXPECT_EQ(item.at("autoShift").at("title"), "AutoShift");
    EXPECT_EQ(Serializer::SerializeSchema(*map.CreateOutputsArgs()).at("properties").at("map").at("title"),
              "OutputMap");
}

TEST_F(TextIdStandardProtocolOutputMapTest, WantsRecordsOfItsOwnKind)
{
    TextIdStandardOutputItem const plainItem;
    TextIdStandardOutputs plainList;

    EXPECT_THROW(map.Add(plainItem), std::bad_cast);
    EXPECT_THROW(map.UpdateId(plainList), std::bad_cast);
    map.AddAll(plainList);
    EXPECT_EQ(map.Count(), 0u);
}

TEST_F(TextIdStandardProtocolOutputMapTest, RefusesAnIncompleteItem)
{
    EXPECT_EQ(Add({{"source", "a"}}), (Refusal{-997, ""}));
    EXPECT_EQ(Add({{"outputId", "x"}}), (Refusal{-997, ""}));

    EXPECT_EQ(log.Lines(), (Lines{UserError("Data source a is invalid"), Error(ADD_LABEL, "Data source a is invalid"),
                                  UserError("Data source  is invalid"), Error(ADD_LABEL, "Data source  is invalid")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, RefusesATakenIdWhateverTheLeaveToShift)
{
    Place({{{"outputId", "x"}, {"source", "a"}}});

    EXPECT_EQ(Add({{"outputId", "x"}, {"source", "b"}}), NO_OVERLAP);
    EXPECT_EQ(Add({{"outputId", "x"}, {"source", "b"}, {"autoShift", true}}), NO_OVERLAP);
    EXPECT_EQ(Add({{"outputId", "x"}, {"source", "a"}}), done);

    EXPECT_EQ(Items(), (Ids{{"x", "a"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(TextIdStandardProtocolOutputMapTest, RemovesByIdAlone)
{
    Place({{{"outputId", "x"}, {"source", "a"}}});

    EXPECT_EQ(Remove("X"), (Refusal{-999, ""}));
    EXPECT_EQ(Remove(""), (Refusal{-997, ""}));
    EXPECT_EQ(Remove("x"), done);

    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(TextIdStandardProtocolOutputMapTest, MovesAnItemToAFreeIdOnly)
{
    Place({{{"outputId", "b"}, {"source", "1"}}, {{"outputId", "c"}, {"source", "2"}}});

    EXPECT_EQ(UpdateId("b", "c"), (Refusal{-980, ""}));
    EXPECT_EQ(UpdateId("x", "c"), (Refusal{-980, ""})); // detected before the search for the old id
    EXPECT_EQ(UpdateId("x", "y"), (Refusal{-999, ""}));
    EXPECT_EQ(UpdateId("", "y"), (Refusal{-997, "Output id is invalid."}));
    EXPECT_EQ(UpdateId("c", "a"), done);

    EXPECT_EQ(Items(), (Ids{{"a", "2"}, {"b", "1"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{"c", ""}, {"a", "2"}}));
    EXPECT_EQ(log.Lines(), (Lines{UserError("Output id is invalid.")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, HasNoGapsToClose)
{
    Place({{{"outputId", "b"}, {"source", "1"}}});

    map.CompactId();

    EXPECT_EQ(Items(), (Ids{{"b", "1"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(TextIdStandardProtocolOutputMapTest, NamesAnItemWithoutIdAfterItsSource)
{
    EXPECT_EQ(AddAll({{{"source", "b"}}, {{"outputId", "a"}, {"source", "z"}}}), done);

    EXPECT_EQ(Items(), (Ids{{"a", "z"}, {"b", "b"}}));
    EXPECT_EQ(ArgumentItems(), (Ids{{"b", "b"}, {"a", "z"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(TextIdStandardProtocolOutputMapTest, PassesOverASourceThatItHas)
{
    EXPECT_EQ(AddAll({{{"outputId", "x"}, {"source", "a"}}, {{"outputId", "y"}, {"source", "a"}}}),
              (Refusal{-987, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{"x", "a"}}));
    EXPECT_EQ(LinesWithoutPlaces(),
              (Lines{UserWarning("Data source a already exists"), Warning(ADD_LABEL, "Data source a already exists"),
                     Error(ADD_ALL_LABEL, "Error adding data source <a>"),
                     Error(ADD_LABEL, "exception with status -987: "), Error(ADD_LABEL, "back trace 0")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, ThrowsTheFirstOfItsRefusals)
{
    Place({{{"outputId", "x"}, {"source", "a"}}});

    EXPECT_EQ(AddAll({{{"outputId", "x"}, {"source", "b"}}, {{"source", ""}}, {{"source", "a"}}, {{"source", "c"}}}),
              (Refusal{-996, NOT_ALL}));

    EXPECT_EQ(Items(), (Ids{{"c", "c"}, {"x", "a"}}));
    EXPECT_EQ(LinesWithoutPlaces(),
              (Lines{Error(ADD_ALL_LABEL, "Error adding data source <b>"),
                     Error(OVERLAP_LABEL, "exception with status -996: Overlap of output id not supported"),
                     Error(OVERLAP_LABEL, "back trace 0"), UserError("Data source  is invalid"),
                     Error(ADD_LABEL, "Data source  is invalid"), Error(ADD_ALL_LABEL, "Error adding data source <>"),
                     Error(ADD_LABEL, "exception with status -997: "), Error(ADD_LABEL, "back trace 0"),
                     UserWarning("Data source a already exists"), Warning(ADD_LABEL, "Data source a already exists"),
                     Error(ADD_ALL_LABEL, "Error adding data source <a>"),
                     Error(ADD_LABEL, "exception with status -987: "), Error(ADD_LABEL, "back trace 0")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, NamesEachSourceForWhichItHasNoRoom)
{
    EXPECT_EQ(AddAll({{{"source", "a"}},
                      {{"source", "b"}},
                      {{"source", "c"}},
                      {{"source", "d"}},
                      {{"source", "e"}},
                      {{"source", "f"}}}),
              (Refusal{-977, NOT_ALL}));

    EXPECT_EQ(map.Count(), 4u);
    EXPECT_EQ(
        LinesWithoutPlaces(),
        (Lines{Error(ADD_ALL_LABEL, "Error adding data source <e>"), Error(SHIFT_LABEL, "exception with status -977: "),
               Error(SHIFT_LABEL, "back trace 0"), Error(ADD_ALL_LABEL, "Error adding data source <f>"),
               Error(SHIFT_LABEL, "exception with status -977: "), Error(SHIFT_LABEL, "back trace 0")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, GivesAStatusToExceptionsOfOthers)
{
    class Troubled final : public TextIdStandardProtocolOutputMap
    {
    public:
        using TextIdStandardProtocolOutputMap::TextIdStandardProtocolOutputMap;

        ZuProtocolOutputDataOverlapState GetOverlappingState(Zu::Params::Group const&) const override
        {
            throw std::runtime_error("50% of trouble");
        }
    };
    Troubled troubled(4);
    TextIdStandardOutputs list;
    list.map.Add().source.Set("a");

    EXPECT_EQ(RefusalOf([&] { troubled.AddAll(list); }), (Refusal{-997, NOT_ALL}));

    EXPECT_EQ(log.Lines(), (Lines{Error(ADD_ALL_LABEL, "Error adding data source <a>"),
                                  Error("std::exception", "exception: 50% of trouble"),
                                  Error("std::exception", "back trace 0: 50% of trouble")}));
}

TEST_F(TextIdStandardProtocolOutputMapTest, StaysAsItWasWhenAChangeBreaksOff)
{
    class Observed final : public TextIdStandardProtocolOutputMap
    {
    public:
        using TextIdStandardProtocolOutputMap::TextIdStandardProtocolOutputMap;

        /// Makes the next change of the first item's id throw.
        void RefuseNextId()
        {
            Zu::Locker const guard(lock);
            auto& id = outputs.map.At(0).outputId;
            refused = id.AddObserver([this, &id](Zu::Properties::Node&) {
                id.RemoveObserver(refused);
                throw std::runtime_error("refused");
            });
        }

    private:
        Zu::Properties::Node::ObserverId refused;
    };
    Observed observed(4);
    TextIdStandardOutputItemArgs item;
    item.outputId.Set("m");
    item.source.Set("1");
    observed.Add(item);
    observed.RefuseNextId();
    item.outputId.Set("a");
    item.source.Set("2");

    EXPECT_THROW(observed.Add(item), std::runtime_error); // the map had copied "m" and removes the copy again

    EXPECT_EQ(observed.Count(), 1u);
    EXPECT_EQ(observed.DataSourceList(), (std::vector<std::string>{"1"}));
    EXPECT_EQ(observed.BSearchForInsert(item), 0u);
    EXPECT_FALSE(observed.IsDuplicateDataSource(item));
    EXPECT_EQ(RefusalOf([&] { observed.Add(item); }), done);
    EXPECT_EQ(observed.Count(), 2u);
    EXPECT_EQ(observed.DataSourceList(), (std::vector<std::string>{"2", "1"}));
    EXPECT_TRUE(observed.IsDuplicateDataSource(item));
}

} // namespace ZuControl::ControlProtocol
