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
                    {43, 14, 1,   0x82, 0,   0,   3,   0,   9,   'Z', 'u', 'C', 'o', 'n', 't', 'r', 'o', 'l',
                     1,  9,  'M', 'o',  'd', 'b', 'u', 's', 'T', 'c', 'p', 2,   5,   '1', '.', '0', '.', '0'},
                    {}},
        RequestCase{"BasicFromTheSecond",
                    {43, 14, 1, 1},
                    {43,  14,  1,   0x82, 0,   0, 2, 1,   9,   'M', 'o', 'd', 'b',
                     'u', 's', 'T', 'c',  'p', 2, 5, '1', '.', '0', '.', '0'},
                    {}},
        RequestCase{"RegularFromItsOwn",
                    {43, 14, 2, 4},
                    {43,  14,  2,   0x82, 0,   0,   1,   4,   20,  'Z', 'u', 'C', 'o', 'n', 't',
                     'r', 'o', 'l', ' ',  'M', 'o', 'd', 'b', 'u', 's', ' ', 'T', 'C', 'P'},
                    {}},
        RequestCase{
            "IndividualRevision", {43, 14, 4, 2}, {43, 14, 4, 0x82, 0, 0, 1, 2, 5, '1', '.', '0', '.', '0'}, {}},
        RequestCase{"IndividualUnknown", {43, 14, 4, 3}, {0xAB, 2}, {}},
        RequestCase{"AccessUnknown", {43, 14, 5, 0}, {0xAB, 3}, {}},
        RequestCase{"Access0", {43, 14, 0, 0}, {0xAB, 3}, {}}, RequestCase{"Short", {43, 14, 1}, {0xAB, 3}, {}},
        RequestCase{"AnotherInterface", {43, 13, 0, 0}, {0xAB, 1}, {}}, RequestCase{"Bare", {43}, {0xAB, 1}, {}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(OtherFunctions, ModbusRequestTest,
                         testing::Values(RequestCase{"Coils", {1, 0, 0, 0, 1}, {0x81, 1}, {}},
                                         RequestCase{"Function0", {0}, {0x80, 1}, {}},
                                         RequestCase{"MaskWrite", {22, 0, 0, 0, 0, 0, 0}, {0x96, 1}, {}},
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
}

TEST_F(ModbusRequestTest, StartsAgainAtTheFirstObjectWhenTheOneAskedForIsNotThere)
{
    EXPECT_EQ(Answer({43, 14, 1, 77}), Answer({43, 14, 1, 0}));
    EXPECT_EQ(Answer({43, 14, 1, 4}), Answer({43, 14, 1, 0})); // not among the basic ones
    EXPECT_EQ(Answer({43, 14, 3, 3})[6], 4);                   // all four
}

} // namespace ModbusTcp
