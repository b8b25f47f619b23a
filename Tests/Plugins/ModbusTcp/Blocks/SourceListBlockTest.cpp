#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"
#include "Plugins/ModbusTcp/Blocks/DecisionBitsBlock.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"

#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace ModbusTcp
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::TestFrame;

TEST(SourceList, SplitsAtCommasAndKeepsFreePlaces)
{
    using Names = std::vector<std::string_view>;

    EXPECT_EQ(SourceListBlock::Split("a"), (Names{"a"}));
    EXPECT_EQ(SourceListBlock::Split("a,b"), (Names{"a", "b"}));
    EXPECT_EQ(SourceListBlock::Split(" a , b c ,d "), (Names{"a", "b c", "d"}));
    EXPECT_EQ(SourceListBlock::Split("a,,c,"), (Names{"a", "", "c", ""}));
    EXPECT_EQ(SourceListBlock::Split(" , "), (Names{"", ""}));
    EXPECT_EQ(SourceListBlock::Split(""), (Names{""}));
}

class SourceListBlockTest : public BlockFixture
{
protected:
    std::shared_ptr<DecisionBitsBlock> PlaceBits(std::string const& sources)
    {
        return std::dynamic_pointer_cast<DecisionBitsBlock>(Place(DecisionBitsBlock::TYPE, 300, sources));
    }
};

constexpr char const* SIXTEEN = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16";
constexpr char const* SEVENTEEN = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17";

TEST_F(SourceListBlockTest, HasAtMost16Places)
{
    Refusal const refusal{-997, "A list of data sources has at most 16 places."};
    auto const block = PlaceBits(SIXTEEN);

    EXPECT_EQ(RefusalOf([&] { block->SetDataSource(SEVENTEEN); }), refusal);

    EXPECT_EQ(block->DataSource(), SIXTEEN);
    ZuControl::ControlProtocol::AddBlockParams params;
    auto& added = params.blocks.Add();
    added.type.Set(DecisionBitsBlock::TYPE);
    added.outputId.Set(400);
    added.dataSource.Set(SEVENTEEN);
    EXPECT_EQ(RefusalOf([&] { assembly.Add(params); }), (Refusal{0, "No register blocks were added."}));
}

TEST_F(SourceListBlockTest, ReadsMeasurementsStampsAndMissingResults)
{
    auto const block = PlaceBits("a");

    auto const measured = block->Read(TestFrame().Measurement("a", -1.2345, 1).First());
    ASSERT_TRUE(measured.measurement.has_value());
    EXPECT_EQ(measured.measurement->value, -1235);
    EXPECT_EQ(measured.measurement->decision, 1);
    EXPECT_FALSE(measured.stamp.has_value());
    for (double const value : {-1.7976931348623157e308, 2147484.0, std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_FALSE(block->Read(TestFrame().Measurement("a", value, 1).First()).measurement.has_value()) << value;
    }
    EXPECT_FALSE(block->Read(TestFrame().Null("a").First()).measurement.has_value());
    auto const stamped = block->Read(TestFrame().Stamp("a", {0, 7, 8, 9, 10}).First());
    ASSERT_TRUE(stamped.stamp.has_value());
    EXPECT_EQ(stamped.stamp->stampCounter, 7u);
    EXPECT_FALSE(stamped.measurement.has_value());
}

TEST_F(SourceListBlockTest, WritesTheDecisionsAndWhichAreValid)
{
    auto const block = PlaceBits("a,b");
    DecisionBitsBlock::Bits const bits{0x8001, 0x8003};
    std::array<uint8, 4> bytes{};

    block->Serialize(bytes.data(), bytes.size(), &bits, sizeof bits);

    EXPECT_EQ(bytes, (std::array<uint8, 4>{0x01, 0x80, 0x03, 0x80})); // the image holds the low byte first
    Refusal const refusal{-992, "Insufficient buffer size available for data serialization."};
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 2, &bits, sizeof bits); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 4, &bits, 2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 4, nullptr, sizeof bits); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(nullptr, 4, &bits, sizeof bits); }), refusal);
}

} // namespace ModbusTcp
