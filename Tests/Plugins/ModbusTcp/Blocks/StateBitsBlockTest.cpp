#include "Plugins/ModbusTcp/Blocks/StateBitsBlock.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"

#include <array>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

struct StateCase
{
    char const* name;
    uint8 run;
    uint8 alignment;
    uint8 laser;
    uint8 link;
    uint8 problems;
    ControlRegisterCommandStatus command;
    uint16 bits;
    bool hasResults = false;
    bool hasLostResults = false;
};

class StateBits : public testing::TestWithParam<StateCase>
{
};

TEST_P(StateBits, ShowEachState)
{
    StateCase const& given = GetParam();
    StateBitsBlock::States states{{}, given.command, given.hasResults, given.hasLostResults};
    states.sensor.system.stateByte0 = given.run;
    states.sensor.system.stateByte2 = given.link;
    states.sensor.system.stateByte3 = given.problems;
    states.sensor.scanner.scannerByte0 = given.alignment;
    states.sensor.scanner.scannerByte1 = given.laser;

    EXPECT_EQ(StateBitsBlock::BitsOf(states), given.bits);
}

INSTANTIATE_TEST_SUITE_P(States, StateBits,
                         testing::Values(StateCase{"Ready", 0, 0, 0, 0, 0, CommandStatusNone, 0x0001},
                                         StateCase{"Running", 1, 0, 0, 0, 0, CommandStatusNone, 0x0002},
                                         StateCase{"Error", 2, 0, 0, 0, 0, CommandStatusNone, 0x0004},
                                         StateCase{"UnknownRunState", 3, 0, 0, 0, 0, CommandStatusNone, 0x0000},
                                         StateCase{"Aligned", 0, 2, 0, 0, 0, CommandStatusNone, 0x0009},
                                         StateCase{"Aligning", 0, 1, 0, 0, 0, CommandStatusNone, 0x0011},
                                         StateCase{"LaserOn", 0, 0, 1, 0, 0, CommandStatusNone, 0x0021},
                                         StateCase{"Linked", 0, 0, 0, 1, 0, CommandStatusNone, 0x0041},
                                         StateCase{"Problems", 0, 0, 0, 0, 200, CommandStatusNone, 0x0081},
                                         StateCase{"CommandRuns", 0, 0, 0, 0, 0, CommandStatusInProgress, 0x0101},
                                         StateCase{"CommandDone", 0, 0, 0, 0, 0, CommandStatusDone, 0x0201},
                                         StateCase{"CommandFailed", 0, 0, 0, 0, 0, CommandStatusFailed, 0x0401},
                                         StateCase{"ResultWaits", 0, 0, 0, 0, 0, CommandStatusNone, 0x0801, true},
                                         StateCase{"ResultsLost", 0, 0, 0, 0, 0, CommandStatusNone, 0x1001, false,
                                                   true}),
                         [](auto const& tested) { return std::string(tested.param.name); });

class StateBitsBlockTest : public BlockFixture
{
};

TEST_F(StateBitsBlockTest, WritesOneRegisterInBothOrders)
{
    auto const block = Place(StateBitsBlock::TYPE, 200);
    StateBitsBlock::States states{{}, CommandStatusInProgress, false, false};
    states.sensor.system.stateByte0 = 1;
    std::array<uint8, 2> bytes{0xAA, 0xAA};

    block->Serialize(bytes.data(), bytes.size(), &states, sizeof states);

    EXPECT_EQ(bytes, (std::array<uint8, 2>{0x02, 0x01})); // the image holds the low byte first
    assembly.ChangeBigEndianSupportedBlocks(false);
    block->Serialize(bytes.data(), bytes.size(), &states, sizeof states);
    EXPECT_EQ(bytes, (std::array<uint8, 2>{0x02, 0x01}));
}

TEST_F(StateBitsBlockTest, RefusesBuffersOfAnotherSize)
{
    auto const block = Place(StateBitsBlock::TYPE, 200);
    StateBitsBlock::States const states{};
    std::array<uint8, 4> bytes{};
    Refusal const refusal{-992, "Insufficient buffer size available for data serialization."};

    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 4, &states, sizeof states); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 2, &states, 2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes.data(), 2, nullptr, sizeof states); }), refusal);
    EXPECT_EQ(RefusalOf([&] { block->Serialize(nullptr, 2, &states, sizeof states); }), refusal);
}

} // namespace ModbusTcp
