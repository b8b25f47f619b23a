#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <random>

namespace ZuControl::ControlProtocol
{

using ZuTest::Bytes;
using ZuTest::MakeType;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

constexpr uint8 GUARD = 0xAA;

/// Makes the protected operations public.
struct OpenBlock : public ProtocolRegisterBlock
{
    using ProtocolRegisterBlock::Convert64fTo32s;
    using ProtocolRegisterBlock::Deserialize16;
    using ProtocolRegisterBlock::FormatFullJobFileName;
    using ProtocolRegisterBlock::ProtocolRegisterBlock;
    using ProtocolRegisterBlock::Serialize_BE;
    using ProtocolRegisterBlock::Serialize_LE;
    using ProtocolRegisterBlock::SerializeInvalidValue;
    using ProtocolRegisterBlock::SerializeValue;
};

struct Layout
{
    uint8 bytesPerRegister;
    bool isBigEndian;
};

constexpr Layout EVERY_LAYOUT[] = {{1, true}, {2, true}, {1, false}, {2, false}};

/// One block with registers of a layout.
struct Registers
{
    explicit Registers(Layout layout)
        : type(MakeType<OpenBlock>(8, layout.bytesPerRegister, layout.isBigEndian)), block(RegisterBlockParams(), *type)
    {
    }

    template <typename T>
    Bytes Value(T value, bool isSigned = false)
    {
        Bytes buffer(12, GUARD);
        block.SerializeValue(buffer.data(), 2, value, isSigned);
        return buffer;
    }

    Bytes Invalid(size_t width, bool isSigned)
    {
        Bytes buffer(12, GUARD);
        block.SerializeInvalidValue(buffer.data(), 2, width, isSigned);
        return buffer;
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    OpenBlock block;
};

/// A buffer with the written bytes from index 2 on; all other bytes are unchanged.
Bytes Guarded(Bytes const& written)
{
    Bytes buffer(12, GUARD);
    std::copy(written.begin(), written.end(), buffer.begin() + 2);
    return buffer;
}

/// A simple model: register by register, byte by byte, from the most significant byte on.
void PlainBigEndian(uint8* where, uint64 value, size_t width, size_t bytesPerRegister)
{
    for (size_t r = 0; r < width / bytesPerRegister; ++r)
    {
        for (size_t i = 0; i < bytesPerRegister; ++i)
        {
            where[bytesPerRegister * (r + 1) - i - 1] =
                static_cast<uint8>(value >> ((width - 1 - bytesPerRegister * r - i) * 8));
        }
    }
}

template <typename T>
Bytes PlainValue(Layout layout, T value)
{
    size_t const width = std::max<size_t>(layout.bytesPerRegister, sizeof(T));
    uint64 const wide = static_cast<uint64>(static_cast<std::conditional_t<std::is_signed_v<T>, int64, uint64>>(value));
    Bytes buffer(12, GUARD);
    if (layout.isBigEndian)
    {
        PlainBigEndian(buffer.data() + 2, wide, width, layout.bytesPerRegister);
        return buffer;
    }
    for (size_t i = 0; i < width; ++i)
    {
        buffer[2 + i] = static_cast<uint8>(wide >> (8 * i));
    }
    return buffer;
}

struct Converted
{
    int32 result;
    int32 isOutOfRange;
    int32 isInvalid;

    bool operator==(Converted const&) const = default;
};

std::ostream& operator<<(std::ostream& stream, Converted const& converted)
{
    return stream << converted.result << " " << converted.isOutOfRange << " " << converted.isInvalid;
}

Converted Convert(double value, double scale = 1000.0)
{
    Converted converted{1, -1, -1};
    OpenBlock::Convert64fTo32s(value, scale, converted.result, converted.isOutOfRange, converted.isInvalid);
    return converted;
}

std::string FullName(std::string const& name)
{
    char text[64] = {};
    std::copy(name.begin(), name.end(), text);
    OpenBlock::FormatFullJobFileName(text, sizeof text);
    return text;
}

/// Status and text, and the function that threw.
template <typename Action>
void ExpectRefusalBy(std::string const& function, std::string const& text, Action action)
{
    try
    {
        action();
        FAIL() << "nothing was thrown";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -997);
        EXPECT_EQ(exception.what(), text);
        EXPECT_EQ(exception.Function(), "ZuControl::ControlProtocol::ProtocolRegisterBlock::" + function);
    }
}

constexpr int32 INVALID = std::numeric_limits<int32>::min();

} // namespace

TEST(ProtocolRegisterBlock, WritesThirtyTwoBitsInEveryLayout)
{
    EXPECT_EQ(Registers({1, true}).Value(uint32{0x11223344}), Guarded({0x11, 0x22, 0x33, 0x44}));
    EXPECT_EQ(Registers({2, true}).Value(uint32{0x11223344}), Guarded({0x22, 0x11, 0x44, 0x33}));
    EXPECT_EQ(Registers({1, false}).Value(uint32{0x11223344}), Guarded({0x44, 0x33, 0x22, 0x11}));
    EXPECT_EQ(Registers({2, false}).Value(uint32{0x11223344}), Guarded({0x44, 0x33, 0x22, 0x11}));
}

TEST(ProtocolRegisterBlock, WritesSixtyFourBitsInEveryLayout)
{
    uint64 const value = 0x0102030405060708;
    EXPECT_EQ(Registers({1, true}).Value(value), Guarded({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(Registers({2, true}).Value(value), Guarded({2, 1, 4, 3, 6, 5, 8, 7}));
    EXPECT_EQ(Registers({1, false}).Value(value), Guarded({8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(Registers({2, false}).Value(value), Guarded({8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(ProtocolRegisterBlock, WidensAByteToAWholeRegisterByItsOwnType)
{
    for (bool const isBigEndian : {true, false})
    {
        Registers registers({2, isBigEndian});
        EXPECT_EQ(registers.Value(uint8{0x7F}), Guarded({0x7F, 0x00}));
        EXPECT_EQ(registers.Value(uint8{0xE9}, true), Guarded({0xE9, 0x00})); // isSigned alone changes nothing
        EXPECT_EQ(registers.Value(static_cast<int8>(0xE9), false), Guarded({0xE9, 0xFF}));
    }
}

TEST(ProtocolRegisterBlock, ReadsRegistersOfTwoBytesTheOtherWayRound)
{
    Registers registers({2, true});
    Bytes const written = registers.Value(uint16{0x1234});
    EXPECT_EQ(written, Guarded({0x34, 0x12}));

    uint16 read = 0;
    registers.block.Deserialize16(read, written.data(), 2);
    EXPECT_EQ(read, 0x3412);

    Registers({2, false}).block.Deserialize16(read, written.data(), 2);
    EXPECT_EQ(read, 0x1234);
}

TEST(ProtocolRegisterBlock, WritesAllSmallValuesAsThePlainLoopDoes)
{
    for (Layout const layout : EVERY_LAYOUT)
    {
        Registers registers(layout);
        for (uint32 value = 0; value <= 0xFFFF; ++value)
        {
            if (value <= 0xFF)
            {
                ASSERT_EQ(registers.Value(static_cast<uint8>(value)), PlainValue(layout, static_cast<uint8>(value)));
                ASSERT_EQ(registers.Value(static_cast<int8>(value)), PlainValue(layout, static_cast<int8>(value)));
            }
            ASSERT_EQ(registers.Value(static_cast<uint16>(value)), PlainValue(layout, static_cast<uint16>(value)));
            ASSERT_EQ(registers.Value(static_cast<int16>(value)), PlainValue(layout, static_cast<int16>(value)));
        }
    }
}

TEST(ProtocolRegisterBlock, WritesLargeValuesAsThePlainLoopDoes)
{
    std::mt19937_64 random(20);
    for (Layout const layout : EVERY_LAYOUT)
    {
        Registers registers(layout);
        for (int i = 0; i < 20000; ++i)
        {
            uint64 const value = random();
            ASSERT_EQ(registers.Value(static_cast<uint32>(value)), PlainValue(layout, static_cast<uint32>(value)));
            ASSERT_EQ(registers.Value(static_cast<int32>(value)), PlainValue(layout, static_cast<int32>(value)));
            ASSERT_EQ(registers.Value(value), PlainValue(layout, value));
            ASSERT_EQ(registers.Value(static_cast<int64>(value)), PlainValue(layout, static_cast<int64>(value)));
        }
    }
}

TEST(ProtocolRegisterBlock, WritesNoByteAloneIntoRegistersOfTwoFromTheTop)
{
    Registers registers({2, true});
    Bytes buffer(12, GUARD);

    registers.block.Serialize_BE(buffer.data(), 2, uint8{0x7F});
    EXPECT_EQ(buffer, Guarded({}));
    registers.block.Serialize_LE(buffer.data(), 2, uint8{0x7F});
    EXPECT_EQ(buffer, Guarded({0x7F}));
}

TEST(ProtocolRegisterBlock, WritesTheMarkOfAMissingValue)
{
    EXPECT_EQ(Registers({1, true}).Invalid(1, true), Guarded({0x80}));
    EXPECT_EQ(Registers({1, true}).Invalid(1, false), Guarded({0xFF}));
    EXPECT_EQ(Registers({1, true}).Invalid(2, true), Guarded({0x80, 0x00}));
    EXPECT_EQ(Registers({2, true}).Invalid(2, true), Guarded({0x00, 0x80}));
    EXPECT_EQ(Registers({1, true}).Invalid(4, true), Guarded({0x80, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Registers({2, true}).Invalid(4, true), Guarded({0x00, 0x80, 0x00, 0x00}));
    EXPECT_EQ(Registers({2, false}).Invalid(4, true), Guarded({0x00, 0x00, 0x00, 0x80}));
    EXPECT_EQ(Registers({1, true}).Invalid(8, true), Guarded({0x80, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Registers({2, true}).Invalid(8, false), Guarded(Bytes(8, 0xFF)));
}

TEST(ProtocolRegisterBlock, MarksAByteInRegistersOfTwoOnALittleEndianProtocolAlone)
{
    ZuTest::LogRecorder log;

    EXPECT_EQ(Registers({2, true}).Invalid(1, true), Guarded({}));
    EXPECT_EQ(Registers({2, false}).Invalid(1, true), Guarded({0x80}));

    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST(ProtocolRegisterBlock, LogsAWidthForWhichThereIsNoMark)
{
    ZuTest::LogRecorder log;

    EXPECT_EQ(Registers({2, true}).Invalid(3, true), Guarded({}));

    EXPECT_EQ(log.Lines(), (std::vector<ZuTest::LogLine>{ZuTest::Warning(
                               "ZuControl::ControlProtocol::ProtocolRegisterBlock::SerializeInvalidValue",
                               "BytesPerRegister (2) specified is not valid")}));
}

TEST(ProtocolRegisterBlock, RefusesOtherRegisterSizesWithTheFirstValue)
{
    Registers three({3, true});
    Registers none({0, false});
    Bytes buffer(12, GUARD);
    std::string const text = "Invalid bytes per register found (3)";

    ExpectRefusalBy("SerializeValue", text, [&] { three.block.SerializeValue(buffer.data(), 2, uint16{1}, false); });
    ExpectRefusalBy("Serialize_BE", text, [&] { three.block.Serialize_BE(buffer.data(), 2, uint16{1}); });
    ExpectRefusalBy("Serialize_LE", text, [&] { three.block.Serialize_LE(buffer.data(), 2, uint16{1}); });
    ExpectRefusalBy("SerializeInvalidValue", text,
                    [&] { three.block.SerializeInvalidValue(buffer.data(), 2, 2, true); });
    ExpectRefusalBy("SerializeValue", "Invalid bytes per register found (0)",
                    [&] { none.block.SerializeValue(buffer.data(), 2, uint8{1}, false); });
    EXPECT_EQ(buffer, Guarded({}));
}

TEST(ProtocolRegisterBlock, RoundsScaledValuesHalfAwayFromZero)
{
    EXPECT_EQ(Convert(1.2345), (Converted{1235, 0, 0}));
    EXPECT_EQ(Convert(-1.2345), (Converted{-1235, 0, 0}));
    EXPECT_EQ(Convert(0.0005), (Converted{1, 0, 0}));
    EXPECT_EQ(Convert(0.0), (Converted{0, 0, 0}));
    EXPECT_EQ(Convert(0.49999999999999994, 1.0), (Converted{1, 0, 0})); // adds one half, then truncates
}

TEST(ProtocolRegisterBlock, TellsValuesThatDoNotFit)
{
    EXPECT_EQ(Convert(2147483.647), (Converted{2147483647, 0, 0}));
    EXPECT_EQ(Convert(2147483.648), (Converted{INVALID, 1, 1}));
    EXPECT_EQ(Convert(-2147483.648), (Converted{INVALID, 0, 0})); // a value, with the bits of the mark
    EXPECT_EQ(Convert(-2147483.649), (Converted{INVALID, 1, 1}));
    EXPECT_EQ(Convert(1e300), (Converted{INVALID, 1, 1}));
    EXPECT_EQ(Convert(-1e300), (Converted{INVALID, 1, 1}));
}

TEST(ProtocolRegisterBlock, TellsMissingValuesFromWhatIsNoNumber)
{
    EXPECT_EQ(Convert(-1.7976931348623157e308), (Converted{INVALID, 0, 1}));
    EXPECT_EQ(Convert(-1.7976931348623157e308, 0.0), (Converted{INVALID, 0, 1}));
    EXPECT_EQ(Convert(std::nan("")), (Converted{INVALID, 1, 1}));
    EXPECT_EQ(Convert(std::numeric_limits<double>::infinity()), (Converted{INVALID, 1, 1}));
    EXPECT_EQ(Convert(-std::numeric_limits<double>::infinity()), (Converted{INVALID, 1, 1}));
}

TEST(ProtocolRegisterBlock, AppendsTheEndingOfJobFilesWhereItIsMissing)
{
    EXPECT_EQ(FullName("line"), "line.zpjob");
    EXPECT_EQ(FullName("line.zpjob"), "line.zpjob");
    EXPECT_EQ(FullName("line.zpjob.old"), "line.zpjob.old.zpjob");
    EXPECT_EQ(FullName("a.zpjob.zpjob"), "a.zpjob.zpjob.zpjob");
    EXPECT_EQ(FullName(".zpjob"), ".zpjob");
    EXPECT_EQ(RefusalOf([] { FullName(""); }), (Refusal{-997, ""}));

    char tight[8] = "line";
    EXPECT_EQ(RefusalOf([&] { OpenBlock::FormatFullJobFileName(tight, sizeof tight); }), (Refusal{-992, ""}));
    EXPECT_STREQ(tight, "line");
}

TEST(ProtocolRegisterBlock, TakesItsTypeNameFromItsType)
{
    auto const type = MakeType<OpenBlock>(4, 1, true);
    RegisterBlockParams params;
    params.type.Set("other");
    params.scannerId.Set("scanner-0");
    params.displayName.Set("name");
    params.outputId.Set(7);

    OpenBlock const block(params, *type);

    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(block),
              (nlohmann::json{{"type", "Test"}, {"displayName", "name"}, {"scannerId", "scanner-0"}, {"outputId", 7}}));
    nlohmann::json const schema = Zu::Properties::JsonSerializer::SerializeSchema(block).at("properties");
    EXPECT_EQ(schema, nlohmann::json::parse(R"({
        "type": {"type": "string", "title": "Type", "sortOrder": 0, "readOnly": true},
        "displayName": {"type": "string", "title": "Display Name", "sortOrder": 100},
        "scannerId": {"type": "string", "title": "Scanner Id", "sortOrder": 200},
        "outputId": {"type": "integer", "title": "Output Id", "sortOrder": 300, "minimum": 0}})"));
}

TEST(ProtocolRegisterBlock, NeedsAnOutputIdWhereIdsAreAddresses)
{
    auto const type = MakeType<OpenBlock>(4, 1, true);
    EXPECT_EQ(RefusalOf([&] { OpenBlock(RegisterBlockParams(), *type); }), (Refusal{1, ""}));

    type->SetIsGlobalAddressSpaceUsed(true);

    EXPECT_EQ(RefusalOf([&] { OpenBlock(RegisterBlockParams(), *type); }),
              (Refusal{-997, "An output id must be specified."}));
}

TEST(ProtocolRegisterBlock, EndsInSixteenBits)
{
    auto const type = MakeType<OpenBlock>(3, 1, true);
    OpenBlock block(RegisterBlockParams(), *type);
    block.SetOutputId(65534);
    EXPECT_EQ(block.EndAddress(), 65534);

    type->SetIsGlobalAddressSpaceUsed(true);

    EXPECT_EQ(block.EndAddress(), 0);
}

TEST(ProtocolRegisterBlock, RefusesWhatAConcreteBlockDoes)
{
    auto const type = MakeType<OpenBlock>(4, 1, true);
    OpenBlock block(RegisterBlockParams(), *type);
    uint8 bytes[4] = {};

    EXPECT_EQ(RefusalOf([&] { block.Serialize(bytes, 4, bytes, 4); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { block.Deserialize(bytes, 4, bytes, 4); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { block.SetDataSource("x"); }),
              (Refusal{-996, "Register block type Test does not support a data source"}));
    EXPECT_EQ(RefusalOf([&] { block.DataSource(); }),
              (Refusal{-996, "Register block type Test does not have a data source"}));
}

TEST(ProtocolRegisterBlock, StoresNamesAndIdsWithoutValidation)
{
    auto const type = MakeType<OpenBlock>(4, 1, true);
    OpenBlock block(RegisterBlockParams(), *type);

    block.SetDisplayName("");
    block.SetScannerId("any");
    block.SetOutputId(65535);

    EXPECT_EQ(block.DisplayName(), "");
    EXPECT_EQ(block.ScannerId(), "any");
    EXPECT_EQ(block.OutputId(), 65535);
}

} // namespace ZuControl::ControlProtocol
