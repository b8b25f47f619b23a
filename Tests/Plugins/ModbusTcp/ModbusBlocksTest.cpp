#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace ModbusTcp
{

using ZuTest::TestFrame;

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using namespace ZuControl::ControlProtocol;

class ModbusBlocksTest : public BlockFixture
{
protected:
    using Registers = std::vector<uint16>;

    void ExpectBothOrders(Block& block, TestFrame const& frame, Registers const& big, Registers const& little)
    {
        EXPECT_EQ(EncodeFirst(block, frame), big);
        assembly.ChangeBigEndianSupportedBlocks(false);
        EXPECT_EQ(EncodeFirst(block, frame), little);
        assembly.ChangeBigEndianSupportedBlocks(true);
    }

    static Registers Part(Registers const& registers, std::size_t first, std::size_t count)
    {
        return Registers(registers.begin() + static_cast<std::ptrdiff_t>(first),
                         registers.begin() + static_cast<std::ptrdiff_t>(first + count));
    }
};

TEST_F(ModbusBlocksTest, HaveTheRegistersThatTheMapPromises)
{
    struct Expected
    {
        char const* type;
        uint16 registers;
        uint16 inputBytes;
        uint16 least;
        uint16 most;
        bool hasDataSource;
    };
    std::vector<Expected> const expected = {
        {"ControlInput", 66, 132, 1, 1, false},
        {"ControlOutput", 2, 0, 1, 1, false},
        {"System", 72, 0, 1, 1, false},
        {"Scanner", 10, 0, 1, 1, false},
        {"Stamp", 20, 0, 0, 65534, true},
        {"MeasurementValue", 2, 0, 0, 65534, true},
        {"Decision", 1, 0, 0, 65534, true},
        {"Measurement", 3, 0, 0, 65534, true},
        {"StateBits", 1, 0, 0, 1, false},
        {"DecisionBits", 2, 0, 0, 65534, true},
        {"ResultQueue", 48, 2, 0, 8, true},
        {"MeasurementReal", 2, 0, 0, 65534, true},
        {"MapFingerprint", 2, 0, 0, 65534, false},
        {"OrderTest", 24, 0, 0, 65534, false},
    };

    assembly.BeginLock();
    auto const& types = assembly.SupportedRegisterBlockTypes();
    ASSERT_EQ(types.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        SCOPED_TRACE(expected[i].type);
        EXPECT_EQ(types[i]->Type(), expected[i].type);
        EXPECT_EQ(types[i]->RegisterCount(), expected[i].registers);
        EXPECT_EQ(types[i]->BytesPerRegister(), 2);
        EXPECT_EQ(types[i]->SerializedOutputSize(), 2 * expected[i].registers);
        EXPECT_EQ(types[i]->DeserializedInputSize(), expected[i].inputBytes);
        EXPECT_EQ(types[i]->MinInstanceCount(), expected[i].least);
        EXPECT_EQ(types[i]->MaxInstanceCount(), expected[i].most);
        EXPECT_EQ(types[i]->HasDataSource(), expected[i].hasDataSource);
        EXPECT_TRUE(types[i]->IsProtocolBigEndian());
    }
    assembly.EndLock();
}

TEST_F(ModbusBlocksTest, ReadACommandWithOneCharacterARegister)
{
    auto const block = Place("ControlInput", 0);
    std::vector<uint8> bytes(132, 0);
    std::vector<uint8> const begin = {0x12, 0x34, 0x00, 0x05, 0x00, 'a', 0xFF, 'b', 0x00, 'c', 0x00, 0x00, 0x00, 'x'};
    std::copy(begin.begin(), begin.end(), bytes.begin());
    ControlRegisterCommandData command;

    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());

    EXPECT_EQ(command.requestId, 0x1234);
    EXPECT_EQ(command.commandId, 5);
    EXPECT_STREQ(command.text, "abc");
}

TEST_F(ModbusBlocksTest, ReadTheLowByteFirstInLittleEndianOrder)
{
    auto const block = Place("ControlInput", 0);
    assembly.ChangeBigEndianSupportedBlocks(false);
    std::vector<uint8> bytes(132, 0);
    std::vector<uint8> const begin = {0x34, 0x12, 0x05, 0x00, 'a', 0x00, 'b', 0xFF, 0x00, 0x00};
    std::copy(begin.begin(), begin.end(), bytes.begin());
    ControlRegisterCommandData command;

    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());

    EXPECT_EQ(command.requestId, 0x1234);
    EXPECT_EQ(command.commandId, 5);
    EXPECT_STREQ(command.text, "ab");
}

TEST_F(ModbusBlocksTest, KeepSixtyThreeCharactersOfALongName)
{
    auto const block = Place("ControlInput", 0);
    std::vector<uint8> bytes(132, 'n');
    bytes[2] = 0;
    bytes[3] = 5;
    ControlRegisterCommandData command;

    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());

    EXPECT_EQ(std::string(command.text), std::string(63, 'n'));
}

TEST_F(ModbusBlocksTest, RefuseOneByteLessThanAllRegisters)
{
    auto const block = Place("ControlInput", 0);
    std::vector<uint8> const bytes(131, 0);
    ControlRegisterCommandData command;

    EXPECT_EQ(RefusalOf([&] { block->Deserialize(&command, sizeof command, bytes.data(), bytes.size()); }),
              (Refusal{-992, "Insufficient source buffer size available for data deserialization."}));
}

TEST_F(ModbusBlocksTest, AnswerACommandInTwoRegisters)
{
    auto const block = Place("ControlOutput", 66);
    DefaultControlOutputRegisterBlock::DefaultCommandResultData const result{0x1234, CommandStatusDone};

    EXPECT_EQ(Encode(*block, result), (Registers{0x1234, 2}));
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_EQ(Encode(*block, result), (Registers{0x1234, 2}));
}

TEST_F(ModbusBlocksTest, ShowTheSystemWithoutTwoFieldsInOneRegister)
{
    auto const block = Place("System", 68);
    DefaultSystemStateRegisterBlock::DefaultSystemStateData state{};
    state.value64 = 0x0102030405060708;
    state.stateByte0 = 2;
    state.jobFileNameLength = 3;
    state.stateByte2 = 0x81;
    state.stateByte3 = 0xFF;
    std::memcpy(state.jobFileName, "job!", 4); // the length counts, not the bytes behind

    Registers const registers = Encode(*block, state);

    EXPECT_EQ(Part(registers, 0, 10), (Registers{0x0102, 0x0304, 0x0506, 0x0708, 2, 3, 'j', 'o', 'b', 0}));
    EXPECT_EQ(Part(registers, 10, 60), Registers(60, 0));
    EXPECT_EQ(Part(registers, 70, 2), (Registers{0x81, 0xFF}));
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_EQ(Part(Encode(*block, state), 0, 6), (Registers{0x0708, 0x0506, 0x0304, 0x0102, 2, 3}));
}

TEST_F(ModbusBlocksTest, ShowAFullJobNameUpToItsLastCharacter)
{
    auto const block = Place("System", 68);
    DefaultSystemStateRegisterBlock::DefaultSystemStateData state{};
    state.jobFileNameLength = 64;
    std::memset(state.jobFileName, 'n', 64);
    state.stateByte2 = 7;

    Registers const registers = Encode(*block, state);

    EXPECT_EQ(registers[5], 64);
    EXPECT_EQ(Part(registers, 6, 64), Registers(64, 'n'));
    EXPECT_EQ(Part(registers, 70, 2), (Registers{7, 0}));
}

TEST_F(ModbusBlocksTest, ShowTheScanner)
{
    auto const block = Place("Scanner", 140);
    DefaultScannerStateRegisterBlock::DefaultScannerStateData state{};
    state.encoderValue = -2;
    state.syncTime = 0x1122334455667788;
    state.scannerByte0 = 1;
    state.scannerByte1 = 1;

    EXPECT_EQ(Encode(*block, state), (Registers{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFE, 0x1122, 0x3344, 0x5566, 0x7788, 1, 1}));
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_EQ(Encode(*block, state), (Registers{0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF, 0x7788, 0x5566, 0x3344, 0x1122, 1, 1}));
}

TEST_F(ModbusBlocksTest, ShowAStamp)
{
    auto const block = Place("Stamp", 150, "profile/stamp");
    TestFrame frame;
    frame.Stamp("profile/stamp", {0x33, 0x0A0B0C0D0E0F1011, 0x1112131415161718, -1, 0x0102030405060708});

    ExpectBothOrders(*block, frame, {0x0102, 0x0304, 0x0506, 0x0708, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0x1112, 0x1314,
                                     0x1516, 0x1718, 0x0A0B, 0x0C0D, 0x0E0F, 0x1011, 3,      0,      0xAA00, 0xAAAA},
                     {0x0708, 0x0506, 0x0304, 0x0102, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0x1718, 0x1516,
                      0x1314, 0x1112, 0x1011, 0x0E0F, 0x0C0D, 0x0A0B, 3,      0,      0xAA00, 0xAAAA});
}

TEST_F(ModbusBlocksTest, ShowAMeasurementTimesAThousand)
{
    auto const block = Place("Measurement", 170, "profile/zMax");
    TestFrame frame;
    frame.Measurement("profile/zMax", 70000.125, 1); // 70000125 is 0x042C1DFD

    ExpectBothOrders(*block, frame, {0x042C, 0x1DFD, 1}, {0x1DFD, 0x042C, 1});
}

TEST_F(ModbusBlocksTest, ShowNegativeMissingAndAbsentMeasurements)
{
    auto const block = Place("Measurement", 170, "m");
    auto const value = Place("MeasurementValue", 180, "m");
    auto const decision = Place("Decision", 190, "m");

    EXPECT_EQ(EncodeFirst(*block, TestFrame().Measurement("m", -0.001, 0)), (Registers{0xFFFF, 0xFFFF, 0}));
    TestFrame missing;
    missing.Measurement("m", ZuVision::MISSING_MEASUREMENT, 1);
    ExpectBothOrders(*block, missing, {0x8000, 0x0000, 2}, {0x0000, 0x8000, 2});
    EXPECT_EQ(EncodeFirst(*value, missing), (Registers{0x8000, 0x0000}));
    EXPECT_EQ(EncodeFirst(*decision, missing), (Registers{1}));
    TestFrame none;
    none.Null("m");
    EXPECT_EQ(EncodeFirst(*block, none), (Registers{0x8000, 0x0000, 2}));
    EXPECT_EQ(EncodeFirst(*decision, none), (Registers{2}));
}

TEST_F(ModbusBlocksTest, MustKeepTheScannerBlock)
{
    Place("Scanner", 140);
    RemoveBlockParams params;
    params.outputIdList.Add().outputId.Set(140);

    EXPECT_EQ(RefusalOf([&] { assembly.Remove(params); }), (Refusal{0, "No register blocks were removed."}));
}

TEST_F(ModbusBlocksTest, DescribeTheSourcesOfLists)
{
    auto const fields = [this](char const* type) {
        std::vector<std::string> shape;
        for (RegisterField const& field : FieldsOf(*Place(type, 0, "profile/zMax,, other")))
        {
            if (field.source != type)
            {
                shape.push_back(field.source + ' ' + field.name + ' ' + std::to_string(field.offset) + '.' +
                                std::to_string(field.bit) + ' ' + field.unit);
            }
        }
        assembly.ResetRegisterAssembly();
        return shape;
    };
    using Shape = std::vector<std::string>;
    EXPECT_EQ(fields("DecisionBits"),
              (Shape{"profile/zMax decisionBit 0.0 ", "other decisionBit 0.2 ", "profile/zMax decisionIsValid 1.0 ",
                     "other decisionIsValid 1.2 ", "profile/zMax decisionBitInput 0.0 ", "other decisionBitInput 2.0 ",
                     "profile/zMax decisionIsValidInput 16.0 ", "other decisionIsValidInput 18.0 "}));
    EXPECT_EQ(fields("ResultQueue"), (Shape{"profile/zMax queued 16.0 mm", "other queued 20.0 "}));
}

TEST_F(ModbusBlocksTest, DescribeTheInputsOfBitsAsTheRegisterIsSent)
{
    auto const firstInput = [this](uint16 outputId, char const* order) {
        auto const fields = FieldsOf(*Place("StateBits", outputId, "", order));
        auto const input = std::ranges::find(fields, FieldArea::DISCRETE_INPUTS, &RegisterField::area);
        assembly.ResetRegisterAssembly();
        return input != fields.end() ? input->name + ' ' + std::to_string(input->offset) : "none";
    };
    EXPECT_EQ(firstInput(200, ""), "readyInput 3200");
    EXPECT_EQ(firstInput(200, "BADC"), "readyInput 3208");
    EXPECT_EQ(firstInput(4095, "ABCD"), "readyInput 65520");
    EXPECT_EQ(firstInput(4096, "ABCD"), "none");
    ChangeOrder(assembly, BlockOrder::DCBA);
    EXPECT_EQ(firstInput(200, ""), "readyInput 3208");
}

TEST_F(ModbusBlocksTest, DescribeTheCoilsThatCanBeWritten)
{
    std::vector<std::string> writable;
    for (RegisterField const& field : FieldsOf(*Place(TYPE_CONTROL_INPUT, 0)))
    {
        if (field.area == FieldArea::COILS && field.isWritable)
        {
            writable.push_back(field.name);
        }
    }
    EXPECT_EQ(writable,
              (std::vector<std::string>{"startCoil", "stopCoil", "alignCoil", "clearCoil", "loadCoil", "triggerCoil"}));
}

TEST_F(ModbusBlocksTest, DescribeTheFieldsOfEachRegister)
{
    auto const shape = [this](char const* type) {
        std::vector<std::string> fields;
        for (RegisterField const& field : FieldsOf(*Place(type, 0, "a")))
        {
            fields.push_back(field.name + ' ' + std::to_string(field.offset) + '+' + std::to_string(field.count) +
                             (field.comment.empty() ? " without comment" : ""));
        }
        assembly.ResetRegisterAssembly();
        return fields;
    };
    using Shape = std::vector<std::string>;
    EXPECT_EQ(shape(TYPE_CONTROL_INPUT),
              (Shape{"requestId 0+1", "commandId 1+1", "text 2+64", "anyCoil 0+1", "startCoil 1+1", "stopCoil 2+1",
                     "alignCoil 3+1", "clearCoil 4+1", "loadCoil 5+1", "triggerCoil 6+1"}));
    EXPECT_EQ(shape(TYPE_CONTROL_OUTPUT), (Shape{"requestId 0+1", "status 1+1"}));
    EXPECT_EQ(shape(TYPE_SYSTEM), (Shape{"upTime 0+4", "runState 4+1", "jobNameLength 5+1", "jobName 6+64",
                                         "linkState 70+1", "problems 71+1"}));
    EXPECT_EQ(shape(TYPE_SCANNER), (Shape{"encoder 0+4", "syncTime 4+4", "alignState 8+1", "laserOn 9+1"}));
    EXPECT_EQ(shape(TYPE_STAMP), (Shape{"stamp 0+4", "encoder 4+4", "time 8+4", "counter 12+4", "inputs 16+1"}));
    EXPECT_EQ(shape(TYPE_MEASUREMENT), (Shape{"value 0+2", "decision 2+1"}));
    EXPECT_EQ(shape(TYPE_MEASUREMENT_VALUE), (Shape{"valueAlone 0+2"}));
    EXPECT_EQ(shape(TYPE_DECISION), (Shape{"decisionAlone 0+1"}));
    EXPECT_EQ(shape("StateBits").size(), 26u);
    EXPECT_EQ(shape("DecisionBits"),
              (Shape{"decisionBit 0+1", "decisionIsValid 1+1", "decisionBitInput 0+1", "decisionIsValidInput 16+1"}));
    EXPECT_EQ(shape("ResultQueue"),
              (Shape{"acknowledged 0+1", "number 1+1", "waiting 2+1", "lost 3+1", "session 4+1", "decisions 5+1",
                     "valid 6+1", "lostBefore 7+1", "frame 8+4", "time 12+4", "queued 16+2"}));
}

} // namespace ModbusTcp
