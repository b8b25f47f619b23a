#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include "Support/OutputMapFixture.h"
#include "ZuApi/Threads/Locker.h"

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

struct RangeCase
{
    char const* name;
    uint16 least;
    uint16 greatest;
    Refusal expected;
};

std::ostream& operator<<(std::ostream& stream, RangeCase const& given)
{
    return stream << given.name;
}

} // namespace

class StandardProtocolOutputMapRange : public testing::TestWithParam<RangeCase>
{
};

TEST_P(StandardProtocolOutputMapRange, IsTestedAtBirth)
{
    RangeCase const& given = GetParam();

    EXPECT_EQ(RefusalOf([&] { StandardProtocolOutputMap(10, given.least, given.greatest); }), given.expected);
}

INSTANTIATE_TEST_SUITE_P(
    EveryRange, StandardProtocolOutputMapRange,
    testing::Values(
        RangeCase{"All", 0, 65534, {1, ""}}, RangeCase{"OneId", 7, 7, {1, ""}},
        RangeCase{"LastId", 65534, 65534, {1, ""}},
        RangeCase{"Reversed", 8, 7, {-997, "Minimum output id value 8 and/or maximum output id value 7 are invalid."}},
        RangeCase{"InvalidId",
                  0,
                  65535,
                  {-997, "Minimum output id value 0 and/or maximum output id value 65535 are invalid."}},
        RangeCase{"InvalidIdAlone",
                  65535,
                  65535,
                  {-997, "Minimum output id value 65535 and/or maximum output id value 65535 are invalid."}}),
    [](auto const& tested) { return std::string(tested.param.name); });

class StandardProtocolOutputMapTest : public ZuTest::OutputMapFixture
{
protected:
    IProtocolOutput& Map() override
    {
        return map;
    }

    StandardProtocolOutputMap map{10, 5, 9};
};

TEST_F(StandardProtocolOutputMapTest, ShowsItsRangeToClients)
{
    EXPECT_EQ(Document(), (Json{{"acceptedDataFormats", Json::array()},
                                {"map", Json::array()},
                                {"attributes", {{"outputIdMin", 5}, {"outputIdMax", 9}}}}));
    EXPECT_EQ(StandardProtocolOutputMap::OUTPUT_ID_MIN, 0);
    EXPECT_EQ(StandardProtocolOutputMap::OUTPUT_ID_MAX, 65534);
}

TEST_F(StandardProtocolOutputMapTest, DoesNotEnforceItsRange)
{
    EXPECT_EQ(Add({{"outputId", 4}, {"source", "a"}}), done);
    EXPECT_EQ(UpdateId(4, 10), done);
    EXPECT_EQ(AddAll({{{"source", "b"}}}), done);

    EXPECT_EQ(Items(), (Ids{{10, "a"}, {11, "b"}}));
}

TEST_F(StandardProtocolOutputMapTest, HoldsItemsWithoutWhatTheirArgumentsHaveMore)
{
    Place({{{"outputId", 6}, {"source", "a"}, {"autoShift", true}}});

    EXPECT_EQ(Document().at("map"), (Json{{{"outputId", 6}, {"source", "a"}}}));
    EXPECT_EQ(map.At(0).nextSortOrder, StandardOutputItem().nextSortOrder);
}

TEST_F(StandardProtocolOutputMapTest, LetsADerivedMapSayWhatItAccepts)
{
    class Accepting final : public StandardProtocolOutputMap
    {
    public:
        Accepting() : StandardProtocolOutputMap(10, 0, 9)
        {
            Zu::Locker const guard(lock);
            ZuPipe::PipeDataFormatProps& format = outputs.acceptedDataFormats.Add();
            format.type.Set(ZuPipe::PipeDataType::MEASUREMENT);
            format.arrayed.Set(true);
        }
    };
    Accepting accepting;

    accepting.BeginLock();
    EXPECT_EQ(Serializer::Serialize(accepting.OutputMap()).at("acceptedDataFormats"),
              (Json{{{"type", 19}, {"arrayed", true}}}));
    accepting.EndLock();
}

} // namespace ZuControl::ControlProtocol
