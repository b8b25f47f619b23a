#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "Tests/Plugins/ModbusTcp/FakeRegisterModel.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace ModbusTcp
{

using Bytes = std::vector<uint8>;
using Calls = std::vector<std::string>;

struct RequestCase
{
    char const* name;
    Bytes request;
    Bytes answer;
    Calls calls; ///< the calls of the model
};

std::ostream& operator<<(std::ostream& stream, RequestCase const& given)
{
    return stream << given.name;
}

/// Registers 0 to 9999 hold their own address; 0 to 65 are writable.
class ModbusRequestTest : public testing::TestWithParam<RequestCase>
{
protected:
    Bytes Answer(Bytes const& request)
    {
        Bytes answer(ModbusFrame::MAX_PDU_BYTES, 0xAA);
        answer.resize(ModbusRequest::Answer(model, request, answer, refusal));
        return answer;
    }

    FakeRegisterModel model;
    ModbusException refusal = ModbusException::NONE;
};

TEST_P(ModbusRequestTest, GetsItsAnswer)
{
    EXPECT_EQ(Answer(GetParam().request), GetParam().answer);
    EXPECT_EQ(model.calls, GetParam().calls);
    EXPECT_EQ(refusal, (GetParam().answer[0] & 0x80) != 0 ? static_cast<ModbusException>(GetParam().answer[1])
                                                          : ModbusException::NONE);
}

std::string NameOf(testing::TestParamInfo<RequestCase> const& tested)
{
    return tested.param.name;
}

Bytes Write16(uint16 first, uint16 count, uint8 byteCount, std::size_t dataBytes)
{
    Bytes request = {16, uint8(first >> 8), uint8(first & 0xFF), uint8(count >> 8), uint8(count & 0xFF), byteCount};
    request.resize(request.size() + dataBytes, 0);
    return request;
}

INSTANTIATE_TEST_SUITE_P(
    Reads, ModbusRequestTest,
    testing::Values(RequestCase{"Holding", {3, 0, 150, 0, 2}, {3, 4, 0, 150, 0, 151}, {"read 150 2"}},
                    RequestCase{"Input", {4, 0x03, 0xE8, 0, 1}, {4, 2, 0x03, 0xE8}, {"read 1000 1"}},
                    RequestCase{"TheLast", {3, 0x27, 0x0F, 0, 1}, {3, 2, 0x27, 0x0F}, {"read 9999 1"}},
                    RequestCase{"PastTheLast", {3, 0x27, 0x0F, 0, 2}, {0x83, 2}, {}},
                    RequestCase{"BehindAll", {4, 0xFF, 0xFF, 0, 1}, {0x84, 2}, {}},
                    RequestCase{"None", {3, 0, 0, 0, 0}, {0x83, 3}, {}},
                    RequestCase{"TooMany", {3, 0, 0, 0, 126}, {0x83, 3}, {}},
                    RequestCase{"TooManyAndPastTheLast", {3, 0xFF, 0xFF, 0, 126}, {0x83, 3}, {}},
                    RequestCase{"Short", {3, 0, 0, 0}, {0x83, 3}, {}},
                    RequestCase{"Long", {3, 0, 0, 0, 1, 0}, {0x83, 3}, {}}, RequestCase{"Bare", {4}, {0x84, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    SingleWrites, ModbusRequestTest,
    testing::Values(RequestCase{"One", {6, 0, 1, 0x12, 0x34}, {6, 0, 1, 0x12, 0x34}, {"write 1: 4660"}},
                    RequestCase{"Outside", {6, 0, 66, 0, 1}, {0x86, 2}, {"write 66: 1"}},
                    RequestCase{"Short", {6, 0, 1, 0}, {0x86, 3}, {}},
                    RequestCase{"Long", {6, 0, 1, 0, 0, 0}, {0x86, 3}, {}}),
    [](auto const& tested) { return std::string("Single") + tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    MultipleWrites, ModbusRequestTest,
    testing::Values(RequestCase{"Two", {16, 0, 0, 0, 2, 4, 0, 7, 0, 1}, {16, 0, 0, 0, 2}, {"write 0: 7 1"}},
                    RequestCase{"PartlyOutside", {16, 0, 65, 0, 2, 4, 0, 7, 0, 1}, {0x90, 2}, {"write 65: 7 1"}},
                    RequestCase{"None", {16, 0, 0, 0, 0, 0}, {0x90, 3}, {}},
                    RequestCase{"TooMany", Write16(0, 124, 248, 248), {0x90, 3}, {}},
                    RequestCase{"ByteCountTooSmall", {16, 0, 0, 0, 2, 2, 0, 7}, {0x90, 3}, {}},
                    RequestCase{"ByteCountTooLarge", {16, 0, 0, 0, 1, 4, 0, 7, 0, 7}, {0x90, 3}, {}},
                    RequestCase{"FewerBytesThanCounted", {16, 0, 0, 0, 2, 4, 0, 7, 0}, {0x90, 3}, {}},
                    RequestCase{"MoreBytesThanCounted", {16, 0, 0, 0, 1, 2, 0, 7, 0}, {0x90, 3}, {}},
                    RequestCase{"NoByteCount", {16, 0, 0, 0, 1}, {0x90, 3}, {}},
                    RequestCase{"CountWrapsTo8Bits", Write16(0, 128, 0, 0), {0x90, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    ReadsAndWrites, ModbusRequestTest,
    testing::Values(RequestCase{"WriteFirst",
                                {23, 0, 66, 0, 2, 0, 0, 0, 1, 2, 0, 9},
                                {23, 4, 0, 66, 0, 67},
                                {"write 0: 9", "read 66 2"}},
                    RequestCase{"ReadOutsideWritesNothing", {23, 0x27, 0x0F, 0, 2, 0, 0, 0, 1, 2, 0, 9}, {0x97, 2}, {}},
                    RequestCase{"WriteOutside", {23, 0, 66, 0, 2, 0, 68, 0, 1, 2, 0, 9}, {0x97, 2}, {"write 68: 9"}},
                    RequestCase{"ReadTooMany", {23, 0, 66, 0, 126, 0, 0, 0, 1, 2, 0, 9}, {0x97, 3}, {}},
                    RequestCase{"ReadNone", {23, 0, 66, 0, 0, 0, 0, 0, 1, 2, 0, 9}, {0x97, 3}, {}},
                    RequestCase{"WriteNone", {23, 0, 66, 0, 1, 0, 0, 0, 0, 0}, {0x97, 3}, {}},
                    RequestCase{"WriteTooMany",
                                [] {
                                    Bytes request = {23, 0, 66, 0, 1, 0, 0, 0, 122, 244};
                                    request.resize(request.size() + 243, 0);
                                    return request;
                                }(),
                                {0x97, 3},
                                {}},
                    RequestCase{"ByteCountWrong", {23, 0, 66, 0, 2, 0, 0, 0, 1, 4, 0, 9}, {0x97, 3}, {}},
                    RequestCase{"Short", {23, 0, 66, 0, 2, 0, 0, 0, 1}, {0x97, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Identification, ModbusRequestTest,
    testing::Values(
        RequestCase{"Basic",
                    {43, 14, 1, 0},
                    {43, 14, 1,   0x83, 0,   0,   3,   0,   9,   'Z', 'u', 'C', 'o', 'n', 't', 'r', 'o', 'l',
                     1,  9,  'M', 'o',  'd', 'b', 'u', 's', 'T', 'c', 'p', 2,   5,   '1', '.', '0', '.', '0'},
                    {}},
        RequestCase{"BasicFromTheSecond",
                    {43, 14, 1, 1},
                    {43,  14,  1,   0x83, 0,   0, 2, 1,   9,   'M', 'o', 'd', 'b',
                     'u', 's', 'T', 'c',  'p', 2, 5, '1', '.', '0', '.', '0'},
                    {}},
        RequestCase{"RegularFromItsOwn",
                    {43, 14, 2, 4},
                    {43,  14,  2,   0x83, 0,   0,   1,   4,   20,  'Z', 'u', 'C', 'o', 'n', 't',
                     'r', 'o', 'l', ' ',  'M', 'o', 'd', 'b', 'u', 's', ' ', 'T', 'C', 'P'},
                    {}},
        RequestCase{
            "IndividualRevision", {43, 14, 4, 2}, {43, 14, 4, 0x83, 0, 0, 1, 2, 5, '1', '.', '0', '.', '0'}, {}},
        RequestCase{"ExtendedFromItsOwn",
                    {43, 14, 3, 0x80},
                    {43,  14,  3,   0x83, 0,    0,   5,    0x80, 10,   'a', 's', 's', 'e', 'm', 'b',
                     'l', 'y', '-', '7',  0x81, 2,   '1',  '0',  0x82, 8,   '0', 'B', 'C', '0', '4',
                     'A', '2', '1', 0x83, 1,    '1', 0x84, 7,    'd',  'e', 'f', 'a', 'u', 'l', 't'},
                    {}},
        RequestCase{"IndividualFingerprint",
                    {43, 14, 4, 0x82},
                    {43, 14, 4, 0x83, 0, 0, 1, 0x82, 8, '0', 'B', 'C', '0', '4', 'A', '2', '1'},
                    {}},
        RequestCase{"RegularHasNoFingerprint",
                    {43, 14, 2, 0x84},
                    {43,  14,  2,   0x83, 0,   0,   4,   0,   9,   'Z', 'u', 'C', 'o', 'n', 't',
                     'r', 'o', 'l', 1,    9,   'M', 'o', 'd', 'b', 'u', 's', 'T', 'c', 'p', 2,
                     5,   '1', '.', '0',  '.', '0', 4,   20,  'Z', 'u', 'C', 'o', 'n', 't', 'r',
                     'o', 'l', ' ', 'M',  'o', 'd', 'b', 'u', 's', ' ', 'T', 'C', 'P'},
                    {}},
        RequestCase{"IndividualBehindAll", {43, 14, 4, 0x85}, {0xAB, 2}, {}},
        RequestCase{"IndividualUnknown", {43, 14, 4, 3}, {0xAB, 2}, {}},
        RequestCase{"AccessUnknown", {43, 14, 5, 0}, {0xAB, 3}, {}},
        RequestCase{"Access0", {43, 14, 0, 0}, {0xAB, 3}, {}}, RequestCase{"Short", {43, 14, 1}, {0xAB, 3}, {}},
        RequestCase{"AnotherInterface", {43, 13, 0, 0}, {0xAB, 1}, {}}, RequestCase{"Bare", {43}, {0xAB, 1}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Coils, ModbusRequestTest,
    testing::Values(RequestCase{"All", {1, 0, 0, 0, 16}, {1, 2, 0x05, 0x80}, {"coils"}},
                    RequestCase{"Middle", {1, 0, 2, 0, 3}, {1, 1, 0x01}, {"coils"}},
                    RequestCase{"Last", {1, 0, 15, 0, 1}, {1, 1, 0x01}, {"coils"}},
                    RequestCase{"PastTheLast", {1, 0, 15, 0, 2}, {0x81, 2}, {}},
                    RequestCase{"BehindAll", {1, 0xFF, 0xFF, 0, 1}, {0x81, 2}, {}},
                    RequestCase{"None", {1, 0, 0, 0, 0}, {0x81, 3}, {}},
                    RequestCase{"MostAreStillTooManyForThisServer", {1, 0, 0, 0x07, 0xD0}, {0x81, 2}, {}},
                    RequestCase{"TooMany", {1, 0, 0, 0x07, 0xD1}, {0x81, 3}, {}},
                    RequestCase{"Short", {1, 0, 0, 0}, {0x81, 3}, {}},
                    RequestCase{"Long", {1, 0, 0, 0, 1, 0}, {0x81, 3}, {}}, RequestCase{"Bare", {1}, {0x81, 3}, {}}),
    NameOf);

// Register 150 holds 150: input 2400 is its bit 0, and 150 is 0b10010110.
INSTANTIATE_TEST_SUITE_P(
    Inputs, ModbusRequestTest,
    testing::Values(RequestCase{"OneRegister", {2, 0x09, 0x60, 0, 16}, {2, 2, 0x96, 0x00}, {"read 150 1"}},
                    RequestCase{"OneBit", {2, 0x09, 0x61, 0, 1}, {2, 1, 0x01}, {"read 150 1"}},
                    RequestCase{"AcrossTwo", {2, 0x09, 0x67, 0, 10}, {2, 2, 0x01, 0x02}, {"read 150 2"}},
                    RequestCase{"NineBits", {2, 0x09, 0x60, 0, 9}, {2, 2, 0x96, 0x00}, {"read 150 1"}},
                    RequestCase{"TheLast", {2, 0xFF, 0xFF, 0, 1}, {2, 1, 0x00}, {"read 4095 1"}},
                    RequestCase{"TheLastThatIsSet", {2, 0xFF, 0xFB, 0, 1}, {2, 1, 0x01}, {"read 4095 1"}},
                    RequestCase{"PastTheLast", {2, 0xFF, 0xFF, 0, 2}, {0x82, 2}, {}},
                    RequestCase{"None", {2, 0, 0, 0, 0}, {0x82, 3}, {}},
                    RequestCase{"TooMany", {2, 0, 0, 0x07, 0xD1}, {0x82, 3}, {}},
                    RequestCase{"TooManyAndPastTheLast", {2, 0xFF, 0xFF, 0x07, 0xD1}, {0x82, 3}, {}},
                    RequestCase{"Short", {2, 0, 0, 0}, {0x82, 3}, {}},
                    RequestCase{"Long", {2, 0, 0, 0, 1, 0}, {0x82, 3}, {}}, RequestCase{"Bare", {2}, {0x82, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    SingleCoils, ModbusRequestTest,
    testing::Values(RequestCase{"On", {5, 0, 1, 0xFF, 0}, {5, 0, 1, 0xFF, 0}, {"write coils: 2"}},
                    RequestCase{"OffChangesNothing", {5, 0, 1, 0, 0}, {5, 0, 1, 0, 0}, {}},
                    RequestCase{"TheLast", {5, 0, 15, 0xFF, 0}, {5, 0, 15, 0xFF, 0}, {"write coils: 32768"}},
                    RequestCase{"Outside", {5, 0, 16, 0xFF, 0}, {0x85, 2}, {}},
                    RequestCase{"OffOutside", {5, 0xFF, 0xFF, 0, 0}, {0x85, 2}, {}},
                    RequestCase{"Value1", {5, 0, 1, 0, 1}, {0x85, 3}, {}},
                    RequestCase{"ValueFF01", {5, 0, 1, 0xFF, 1}, {0x85, 3}, {}},
                    RequestCase{"ValueWrongAndOutside", {5, 0, 16, 0xFF, 0xFF}, {0x85, 3}, {}},
                    RequestCase{"Short", {5, 0, 1, 0xFF}, {0x85, 3}, {}},
                    RequestCase{"Long", {5, 0, 1, 0xFF, 0, 0}, {0x85, 3}, {}}),
    NameOf);

Bytes Write15(uint16 count, uint8 byteCount, std::size_t dataBytes)
{
    Bytes request = {15, 0, 0, uint8(count >> 8), uint8(count & 0xFF), byteCount};
    request.resize(request.size() + dataBytes, 0);
    return request;
}

INSTANTIATE_TEST_SUITE_P(
    MultipleCoils, ModbusRequestTest,
    testing::Values(RequestCase{"Two", {15, 0, 1, 0, 2, 1, 0x03}, {15, 0, 1, 0, 2}, {"write coils: 6"}},
                    RequestCase{
                        "BitsBehindTheLastDoNotCount", {15, 0, 1, 0, 2, 1, 0xFE}, {15, 0, 1, 0, 2}, {"write coils: 4"}},
                    RequestCase{"All", {15, 0, 0, 0, 16, 2, 0x02, 0x80}, {15, 0, 0, 0, 16}, {"write coils: 32770"}},
                    RequestCase{"ZerosChangeNothing", {15, 0, 0, 0, 16, 2, 0, 0}, {15, 0, 0, 0, 16}, {}},
                    RequestCase{"PartlyOutside", {15, 0, 15, 0, 2, 1, 0x01}, {0x8F, 2}, {}},
                    RequestCase{"MostAreStillTooManyForThisServer", Write15(1968, 246, 246), {0x8F, 2}, {}},
                    RequestCase{"TooMany", Write15(1969, 247, 247), {0x8F, 3}, {}},
                    RequestCase{"None", {15, 0, 0, 0, 0, 0}, {0x8F, 3}, {}},
                    RequestCase{"ByteCountTooSmall", {15, 0, 0, 0, 9, 1, 0}, {0x8F, 3}, {}},
                    RequestCase{"ByteCountTooLarge", {15, 0, 0, 0, 8, 2, 0, 0}, {0x8F, 3}, {}},
                    RequestCase{"FewerBytesThanCounted", {15, 0, 0, 0, 16, 2, 0}, {0x8F, 3}, {}},
                    RequestCase{"MoreBytesThanCounted", {15, 0, 0, 0, 8, 1, 0, 0}, {0x8F, 3}, {}},
                    RequestCase{"CountWrapsTo8Bits", Write15(2048, 0, 0), {0x8F, 3}, {}},
                    RequestCase{"NoByteCount", {15, 0, 0, 0, 1}, {0x8F, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    MaskWrites, ModbusRequestTest,
    testing::Values(RequestCase{"One", {22, 0, 4, 0, 0xF2, 0, 0x25}, {22, 0, 4, 0, 0xF2, 0, 0x25}, {"mask 4: 242 37"}},
                    RequestCase{"Outside", {22, 0, 66, 0, 0, 0, 1}, {0x96, 2}, {"mask 66: 0 1"}},
                    RequestCase{"Short", {22, 0, 4, 0, 0xF2, 0}, {0x96, 3}, {}},
                    RequestCase{"Long", {22, 0, 4, 0, 0xF2, 0, 0x25, 0}, {0x96, 3}, {}},
                    RequestCase{"Bare", {22}, {0x96, 3}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(OtherFunctions, ModbusRequestTest,
                         testing::Values(RequestCase{"ReadExceptionStatus", {7}, {0x87, 1}, {}},
                                         RequestCase{"Function0", {0}, {0x80, 1}, {}},
                                         RequestCase{"Diagnostics", {8, 0, 0, 0, 0}, {0x88, 1}, {}},
                                         RequestCase{"ReadFifo", {24, 0, 0}, {0x98, 1}, {}},
                                         RequestCase{"AnException", {0x83, 2}, {0x83, 1}, {}}),
                         NameOf);

TEST_F(ModbusRequestTest, ReadsAsManyRegistersAsAnAnswerHolds)
{
    Bytes const answer = Answer({3, 0, 0, 0, 125});

    ASSERT_EQ(answer.size(), 252u);
    EXPECT_EQ(answer[1], 250);
    EXPECT_EQ(answer[250], 0);
    EXPECT_EQ(answer[251], 124);
}

TEST_F(ModbusRequestTest, ReadsAsManyInputsAsAnAnswerHolds)
{
    Bytes const answer = Answer({2, 0x09, 0x67, 0x07, 0xD0}); // from bit 7 of register 150

    ASSERT_EQ(answer.size(), 252u);
    EXPECT_EQ(answer[1], 250);
    EXPECT_EQ(answer[2], 0x01);                      // bits 7 to 14 of 150
    EXPECT_EQ(answer[4], 0x01);                      // bits 7 to 14 of 151
    EXPECT_EQ(answer[251], 0x26);                    // bit 15 of 274, bits 0 to 6 of 275
    EXPECT_EQ(model.calls, (Calls{"read 150 126"})); // one read, so that no two results mix
}

TEST(ModbusRequest, AllowsToReadFromViewerOnAndToWriteFromOperatorOn)
{
    for (uint8 const function : Bytes{1, 2, 3, 4, 43})
    {
        EXPECT_EQ(ModbusRequest::RoleFor(function), ZuCommon::Role::VIEWER) << unsigned{function};
    }
    for (uint8 const function : Bytes{5, 6, 15, 16, 22, 23, 0, 7, 8, 20, 21, 24, 100})
    {
        EXPECT_EQ(ModbusRequest::RoleFor(function), ZuCommon::Role::OPERATOR) << unsigned{function};
    }
}

TEST_F(ModbusRequestTest, WritesAsManyRegistersAsARequestHolds)
{
    model.writable = 200;

    Bytes const answer = Answer(Write16(0, 123, 246, 246));

    EXPECT_EQ(answer, (Bytes{16, 0, 0, 0, 123}));
    EXPECT_EQ(model.calls.size(), 1u);
}

TEST_F(ModbusRequestTest, PassesOnThatAnOperationStillRuns)
{
    model.refusal = ModbusException::SERVER_DEVICE_BUSY;

    EXPECT_EQ(Answer({6, 0, 0, 0, 1}), (Bytes{0x86, 6}));
    EXPECT_EQ(Answer({16, 0, 0, 0, 1, 2, 0, 1}), (Bytes{0x90, 6}));
    EXPECT_EQ(Answer({23, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 1}), (Bytes{0x97, 6}));
    EXPECT_EQ(Answer({5, 0, 1, 0xFF, 0}), (Bytes{0x85, 6}));
    EXPECT_EQ(Answer({15, 0, 0, 0, 2, 1, 2}), (Bytes{0x8F, 6}));
    EXPECT_EQ(Answer({22, 0, 0, 0, 0, 0, 1}), (Bytes{0x96, 6}));
}

TEST_F(ModbusRequestTest, StartsAgainAtTheFirstObjectWhenTheOneAskedForIsNotThere)
{
    EXPECT_EQ(Answer({43, 14, 1, 77}), Answer({43, 14, 1, 0}));
    EXPECT_EQ(Answer({43, 14, 1, 4}), Answer({43, 14, 1, 0})); // not among the basic ones
    EXPECT_EQ(Answer({43, 14, 3, 3})[6], 9);                   // all
}

TEST_F(ModbusRequestTest, CutsTextsThatDoNotFitOneAnswer)
{
    model.identity = {std::string(300, 'n'), 4294967295, 0xFFFFFFFF, std::string(300, 'j')};

    Bytes const answer = Answer({43, 14, 3, 0});

    EXPECT_EQ(answer[6], 9);
    EXPECT_EQ(answer[7 + 51 + 1], 64);
    EXPECT_EQ(answer.size(), 7u + 51 + 66 + 12 + 10 + 3 + 66);
    EXPECT_EQ(answer.back(), 'j');
}

} // namespace ModbusTcp
