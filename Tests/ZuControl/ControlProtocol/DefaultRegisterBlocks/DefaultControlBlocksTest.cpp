#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"

#include <gtest/gtest.h>

#include <cstring>

namespace ZuControl::ControlProtocol
{

using ZuTest::Bytes;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

struct Input
{
    Input(uint8 bytesPerRegister, bool isBigEndian, uint16 leastSize)
    {
        auto params = ZuTest::TypeParams<DefaultControlInputRegisterBlock>("ControlInput", 67);
        params.bytesPerRegister = bytesPerRegister;
        params.isProtocolBigEndian = isBigEndian;
        params.deserializedInputSize = leastSize;
        type = std::make_unique<ProtocolRegisterBlockInfo>(params);
        block = std::make_unique<DefaultControlInputRegisterBlock>(RegisterBlockParams(), *type);
        std::memset(&command, 0xAA, sizeof command);
    }

    Refusal Read(Bytes const& source)
    {
        return RefusalOf([&] { block->Deserialize(&command, sizeof command, source.data(), source.size()); });
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    std::unique_ptr<DefaultControlInputRegisterBlock> block;
    ControlRegisterCommandData command;
};

/// A source of this size with these first bytes; the rest is zero.
Bytes Source(Bytes start, size_t size = 67)
{
    start.resize(size);
    return start;
}

Refusal const DONE{1, ""};
Refusal const SHORT_SOURCE{-992, "Insufficient source buffer size available for data deserialization."};

} // namespace

TEST(DefaultControlInputRegisterBlock, ReadsACommandWithAJobName)
{
    Input input(1, true, 67);

    EXPECT_EQ(input.Read(Source({0x01, 0x02, 0x05, 'j', 'o', 'b', 0x00})), DONE);

    EXPECT_EQ(input.command.requestId, 0x0102);
    EXPECT_EQ(input.command.commandId, 5);
    EXPECT_STREQ(input.command.text, "job");
    EXPECT_EQ(input.command.text[63], '\0');
}

TEST(DefaultControlInputRegisterBlock, ReadsTheRequestIdInTheOrderOfTheProtocol)
{
    Input input(1, false, 67);

    EXPECT_EQ(input.Read(Source({0x01, 0x02, 0x05, 'j', 'o', 'b', 0x00})), DONE);

    EXPECT_EQ(input.command.requestId, 0x0201);
    EXPECT_STREQ(input.command.text, "job");
}

TEST(DefaultControlInputRegisterBlock, ReadsTheLowByteOfRegistersOfTwo)
{
    Input big(2, true, 131);
    Bytes registers = Source({0x01, 0x02, 0x00, 0x05, 'j', 0x00, 'b', 0x00, 0x00}, 131);
    EXPECT_EQ(big.Read(registers), DONE);
    EXPECT_EQ(big.command.commandId, 5);
    EXPECT_STREQ(big.command.text, "jb"); // bytes 4, 6 and so on: the text begins inside the command id

    Input little(2, false, 131);
    registers = Source({0x01, 0x02, 0x05, 'j', 0x00, 'b', 0x00, 0x00}, 131);
    EXPECT_EQ(little.Read(registers), DONE);
    EXPECT_EQ(little.command.requestId, 0x0201);
    EXPECT_STREQ(little.command.text, "jb"); // bytes 3, 5 and so on
}

TEST(DefaultControlInputRegisterBlock, FollowsTheOffsetsOfADerivedLayout)
{
    Input input(2, true, 132);
    input.block->textOffset = 4;
    Bytes registers = Source({0x01, 0x02, 0x00, 0x05, 0x00, 'j', 0x00, 'b'}, 132);

    EXPECT_EQ(input.Read(registers), DONE);

    EXPECT_STREQ(input.command.text, "jb");
}

TEST(DefaultControlInputRegisterBlock, RefusesAJobWithoutAName)
{
    Input input(1, true, 67);

    EXPECT_EQ(input.Read(Source({0x01, 0x02, 0x05, 0x00, 'x'})), (Refusal{-997, ""}));

    EXPECT_EQ(input.command.requestId, 0x0102);
    EXPECT_EQ(input.command.commandId, 5);
}

TEST(DefaultControlInputRegisterBlock, KeepsSixtyThreeCharacters)
{
    Input input(1, true, 67);
    Bytes registers = {0x00, 0x01, 0x05};
    registers.resize(67, 'x');

    EXPECT_EQ(input.Read(registers), DONE);

    EXPECT_EQ(std::string(input.command.text), std::string(63, 'x'));
}

TEST(DefaultControlInputRegisterBlock, ReadsTextForNoOtherCommand)
{
    for (uint8 const commandId : std::initializer_list<uint8>{0, 1, 2, 3, 4, 6, 9})
    {
        Input input(1, true, 67);

        EXPECT_EQ(input.Read(Source({0x00, 0x01, commandId, 'x', 'y'})), DONE);

        EXPECT_EQ(input.command.commandId, commandId);
        EXPECT_EQ(std::string(input.command.text, 64), std::string(64, '\0'));
    }
}

TEST(DefaultControlInputRegisterBlock, TakesALargerSourceAndRefusesASmallerOne)
{
    ZuTest::LogRecorder log;
    Input input(1, true, 67);

    EXPECT_EQ(input.Read(Source({0, 1, 1}, 66)), SHORT_SOURCE);
    EXPECT_EQ(input.command.commandId, 0xAA);
    EXPECT_EQ(input.Read(Source({0, 1, 1}, 68)), DONE);
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST(DefaultControlInputRegisterBlock, TakesNoOtherSizeOfDestination)
{
    Input input(1, true, 67);
    Bytes const source = Source({0, 1, 1});
    uint8 destination[69] = {};

    for (size_t const size : {67u, 69u})
    {
        EXPECT_EQ(RefusalOf([&] { input.block->Deserialize(destination, size, source.data(), source.size()); }),
                  (Refusal{-992, "Insufficient destination buffer available for data deserialization output."}));
    }
    EXPECT_EQ(RefusalOf([&] { input.block->Deserialize(destination, 67, source.data(), 66); }), SHORT_SOURCE);
}

TEST(DefaultControlInputRegisterBlock, ReadsNothingBehindTheSource)
{
    Input input(2, true, 0); // a type without a minimum size
    std::unique_ptr<uint8[]> const source(new uint8[5]{0x00, 0x01, 0x00, 0x05, 'j'});

    EXPECT_EQ(RefusalOf([&] { input.block->Deserialize(&input.command, 68, source.get(), 5); }), DONE);
    EXPECT_STREQ(input.command.text, "j");
    EXPECT_EQ(RefusalOf([&] { input.block->Deserialize(&input.command, 68, source.get(), 3); }), SHORT_SOURCE);
    EXPECT_EQ(RefusalOf([&] { input.block->Deserialize(&input.command, 68, source.get(), 0); }), SHORT_SOURCE);
}

namespace
{

using Result = DefaultControlOutputRegisterBlock::DefaultCommandResultData;

struct Output
{
    Output(uint16 registers, uint8 bytesPerRegister, bool isBigEndian)
        : type(ZuTest::MakeType<DefaultControlOutputRegisterBlock>(registers, bytesPerRegister, isBigEndian)),
          block(RegisterBlockParams(), *type)
    {
    }

    Bytes Answer()
    {
        Result const result{0x1234, CommandStatusDone};
        return ZuTest::Written(block, type->SerializedOutputSize(), &result, sizeof result);
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    DefaultControlOutputRegisterBlock block;
};

} // namespace

TEST(DefaultControlOutputRegisterBlock, WritesRequestIdAndStatus)
{
    EXPECT_EQ(Output(3, 1, true).Answer(), (Bytes{0x12, 0x34, 0x02}));
    EXPECT_EQ(Output(3, 1, false).Answer(), (Bytes{0x34, 0x12, 0x02}));
    EXPECT_EQ(Output(2, 2, true).Answer(), (Bytes{0x34, 0x12, 0x02, 0x00}));
    EXPECT_EQ(Output(2, 2, false).Answer(), (Bytes{0x34, 0x12, 0x02, 0x00}));
}

TEST(DefaultControlOutputRegisterBlock, TakesNoOtherSizes)
{
    Output output(3, 1, true);
    Result const result{1, CommandStatusDone};
    uint8 registers[4] = {0xAA, 0xAA, 0xAA, 0xAA};

    EXPECT_EQ(RefusalOf([&] { output.block.Serialize(registers, 4, &result, 3); }),
              (Refusal{-992, "Insufficient source buffer size available for data serialization."}));
    EXPECT_EQ(RefusalOf([&] { output.block.Serialize(registers, 4, &result, 4); }),
              (Refusal{-992, "Insufficient destination buffer available for data serialization output."}));
    EXPECT_EQ(registers[0], 0xAA);
}

TEST(DefaultControlOutputRegisterBlock, RefusesATypeWithTooFewRegisters)
{
    EXPECT_EQ(RefusalOf([] { Output(2, 1, true).Answer(); }),
              (Refusal{-992, "Insufficient destination buffer available for data serialization output."}));
    EXPECT_EQ(RefusalOf([] { Output(3, 3, true).Answer(); }), (Refusal{-997, "Invalid bytes per register found (3)"}));
    EXPECT_EQ(RefusalOf([] { Output(3, 0, true).Answer(); }), (Refusal{-997, "Invalid bytes per register found (0)"}));
}

} // namespace ZuControl::ControlProtocol
