#include "Plugins/ModbusTcp/ModbusConversation.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <vector>

namespace ModbusTcp
{

using Bytes = std::vector<uint8>;
using Parsed = ModbusFrame::Parsed;

struct ParseCase
{
    char const* name;
    Bytes bytes;
    Parsed result;
};

class ModbusFrameParse : public testing::TestWithParam<ParseCase>
{
};

TEST_P(ModbusFrameParse, TellsWhatTheBytesAre)
{
    ModbusFrame frame;

    EXPECT_EQ(ModbusFrame::Parse(GetParam().bytes, frame), GetParam().result);
}

Bytes WithPdu(Bytes bytes, std::size_t pduBytes)
{
    bytes.resize(bytes.size() + pduBytes, 0x55);
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    EveryShape, ModbusFrameParse,
    testing::Values(ParseCase{"Nothing", {}, Parsed::INCOMPLETE},
                    ParseCase{"HalfTheProtocol", {0, 1, 0xFF}, Parsed::INCOMPLETE},
                    ParseCase{"AnotherProtocol", {0, 1, 0, 1}, Parsed::MALFORMED},
                    ParseCase{"AnotherProtocolHighByte", {0, 1, 1, 0}, Parsed::MALFORMED},
                    ParseCase{"NoLengthYet", {0, 1, 0, 0, 0}, Parsed::INCOMPLETE},
                    ParseCase{"Length0", {0, 1, 0, 0, 0, 0}, Parsed::MALFORMED},
                    ParseCase{"Length1HasNoFunction", {0, 1, 0, 0, 0, 1}, Parsed::MALFORMED},
                    ParseCase{"Length2NoBytesYet", {0, 1, 0, 0, 0, 2}, Parsed::INCOMPLETE},
                    ParseCase{"Length2", {0, 1, 0, 0, 0, 2, 9, 3}, Parsed::COMPLETE},
                    ParseCase{"OneByteShort", {0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0}, Parsed::INCOMPLETE},
                    ParseCase{"ARead", {0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0, 1}, Parsed::COMPLETE},
                    ParseCase{"ALittleMore", {0, 1, 0, 0, 0, 2, 9, 3, 0xFF}, Parsed::COMPLETE},
                    ParseCase{"Length254", WithPdu({0, 1, 0, 0, 0, 254, 1}, 253), Parsed::COMPLETE},
                    ParseCase{"Length255", {0, 1, 0, 0, 0, 255}, Parsed::MALFORMED},
                    ParseCase{"Length256", {0, 1, 0, 0, 1, 0}, Parsed::MALFORMED}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(ModbusFrame, TakesTransactionUnitAndDataAndLeavesTheNextFrame)
{
    Bytes const bytes = {0x12, 0x34, 0, 0, 0, 4, 0xF7, 3, 0xAB, 0xCD, /* next */ 0x12, 0x35};
    ModbusFrame frame;

    ASSERT_EQ(ModbusFrame::Parse(bytes, frame), Parsed::COMPLETE);

    EXPECT_EQ(frame.transactionId, 0x1234);
    EXPECT_EQ(frame.unitId, 0xF7);
    EXPECT_EQ(Bytes(frame.pdu.begin(), frame.pdu.end()), (Bytes{3, 0xAB, 0xCD}));
    EXPECT_EQ(frame.Bytes(), 10u);
}

TEST(ModbusFrame, AnswersWithTheSameTransactionAndUnit)
{
    ModbusFrame frame;
    frame.transactionId = 0xFEDC;
    frame.unitId = 17;
    std::array<uint8, ModbusFrame::HEADER_BYTES> header;
    header.fill(0xAA);

    EXPECT_EQ(frame.WriteAnswerHeader(header, 253), 260u);

    EXPECT_EQ(header, (std::array<uint8, 7>{0xFE, 0xDC, 0, 0, 0, 254, 17}));
}

} // namespace ModbusTcp
