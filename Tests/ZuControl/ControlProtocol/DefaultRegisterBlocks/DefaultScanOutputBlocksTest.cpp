#include "Support/AllocationCounter.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuControl::ControlProtocol
{

using ZuTest::Bytes;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

using Data = ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData;
using Value = DefaultMeasurementValueRegisterBlock;
using Decision = DefaultMeasurementDecisionRegisterBlock;
using Both = DefaultMeasurementValueAndDecisionRegisterBlock;
using Stamp = DefaultStampRegisterBlock;
using Message = wHandle<void>;

Message Measurement(double value, uint8 decision)
{
    ZuVision::ZvMeasurementMsg* msg = nullptr;
    ZuVision::ZvMeasurementMsg_Construct(&msg, value, decision, nullptr);
    return Message(msg);
}

Message Null()
{
    ZuVision::ZvNullMsg* msg = nullptr;
    ZuVision::ZvNullMsg_Construct(&msg, nullptr);
    return Message(msg);
}

Message StampOf(wStamp const& stamp)
{
    ZuVision::ZvStampMsg* msg = nullptr;
    ZuVision::ZvStampMsg_Construct(&msg, stamp, nullptr);
    return Message(msg);
}

Message ArrayOf(std::vector<void*> const& elements)
{
    ZuVision::ZvArrayMsg* msg = nullptr;
    ZuVision::ZvArrayMsg_Construct(&msg, elements.data(), elements.size(), nullptr);
    return Message(msg);
}

/// A result item of this type with a message, and its parts.
struct Item
{
    Item(uint16 type, void* msg)
    {
        wMsgInfo* madeMsgInfo = nullptr;
        wMsgInfo_Construct(&madeMsgInfo, 3, 4, msg, nullptr);
        msgInfo.reset(madeMsgInfo);
        ZuCore::ResultInfo madeInfo = nullptr;
        ZuCore::ResultInfo_Construct(&madeInfo, "source", type, nullptr);
        resultInfo.reset(madeInfo);
        ZuCore::ResultItem madeItem = nullptr;
        ZuCore::ResultItem_Construct(&madeItem, madeMsgInfo, madeInfo, nullptr);
        item.reset(madeItem);
    }

    wHandle<wMsgInfo> msgInfo;
    wHandle<ZuCore::ResultInfoObject> resultInfo;
    wHandle<ZuCore::ResultItemObject> item;
};

template <typename Block>
struct Placed
{
    explicit Placed(uint16 registers, uint8 bytesPerRegister = 1, bool isBigEndian = true)
        : type(ZuTest::MakeType<Block>(registers, bytesPerRegister, isBigEndian, true)),
          block(RegisterBlockParams(), *type)
    {
    }

    Bytes Write(Item const& result, uint32 mode = 0)
    {
        Data const data{result.item.get(), mode};
        return ZuTest::Written(block, type->SerializedOutputSize(), &data, sizeof data);
    }

    Bytes Write(uint16 resultType, Message const& msg, uint32 mode = 0)
    {
        return Write(Item(resultType, msg.get()), mode);
    }

    Refusal Refused(uint16 resultType, Message const& msg)
    {
        return RefusalOf([&] { Write(resultType, msg); });
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    Block block;
};

/// A block that checks the reference counts while it writes.
struct WatchingBlock : public DefaultMeasurementValueRegisterBlock
{
    WatchingBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
        : ProtocolScanOutputRegisterBlock(params, usedInfo), DefaultMeasurementValueRegisterBlock(params, usedInfo)
    {
    }

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override
    {
        resultItem = data->resultItem;
        elementReferences = wObject_RefCount(MessageOf(data->resultItem));
        infoReferences = wObject_RefCount(ZuCore::ResultItem_ResultInfo(data->resultItem));
        DefaultMeasurementValueRegisterBlock::SerializeMeasurementMsg(buffer, offset, data);
    }

    ZuCore::ResultItem resultItem = nullptr;
    uint64 elementReferences = 0;
    uint64 infoReferences = 0;
};

constexpr uint16 STAMP = 11;
constexpr uint16 MEASUREMENT = 19;
constexpr double MISSING = -1.7976931348623157e308;
Refusal const UNSUPPORTED{-996, ""};
Refusal const NO_ROOM{-992, "Insufficient destination buffer size available for data serialization output."};

wStamp const THE_STAMP{0x33, 0x0102030405060708, 0x1112131415161718, -2, 0x2122232425262728};

Bytes Part(Bytes const& bytes, size_t from, size_t to)
{
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.begin() + static_cast<std::ptrdiff_t>(to));
}

uint8 InputsFor(uint16 status)
{
    return Placed<Stamp>(36).Write(STAMP, StampOf({.stampStatus = status}))[32];
}

template <typename Block>
void ExpectMarkedUnusedAndFollowing()
{
    Placed<Block> placed(36);
    nlohmann::json const schema = Zu::Properties::JsonSerializer::SerializeSchema(placed.block).at("properties");
    EXPECT_EQ(schema.at("scannerId").at("used"), false);
    EXPECT_EQ(schema.at("dataSource").at("title"), "Scan Output Data Source");
    EXPECT_EQ(schema.at("dataSource").at("sortOrder"), 400);

    placed.block.SetDataSource("profile/zMax");

    EXPECT_EQ(placed.block.DataSource(), "profile/zMax");
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(placed.block).at("dataSource"), "profile/zMax");
}

} // namespace

TEST(ProtocolScanOutputRegisterBlock, NeedsATypeWithADataSource)
{
    auto const type = ZuTest::MakeType<Stamp>(36, 1, true, false);
    RegisterBlockParams params;
    params.type.Set("Stamp");

    EXPECT_EQ(RefusalOf([&] { Stamp(params, *type); }),
              (Refusal{-980, "Register block type Stamp must support scan output data sources"}));

    type->SetIsGlobalAddressSpaceUsed(true);
    EXPECT_EQ(RefusalOf([&] { Stamp(params, *type); }), (Refusal{-997, "An output id must be specified."}));
}

TEST(ProtocolScanOutputRegisterBlock, ShowsItsDataSourceBehindTheCommonKeys)
{
    ExpectMarkedUnusedAndFollowing<Stamp>();
    ExpectMarkedUnusedAndFollowing<Value>();
    ExpectMarkedUnusedAndFollowing<Decision>();
    ExpectMarkedUnusedAndFollowing<Both>();
}

TEST(ProtocolScanOutputRegisterBlock, TakesNoOtherSizesTheSourceFirst)
{
    Placed<Value> placed(4);
    Item const item(MEASUREMENT, Measurement(1, 1).get());
    Data const data{item.item.get(), 0};
    uint8 registers[5] = {};

    EXPECT_EQ(RefusalOf([&] { placed.block.Serialize(registers, 5, &data, 15); }),
              (Refusal{-992, "Insufficient source buffer size available for data serialization."}));
    EXPECT_EQ(RefusalOf([&] { placed.block.Serialize(registers, 5, &data, 16); }), NO_ROOM);
}

TEST(ProtocolScanOutputRegisterBlock, WritesTheFirstElementOfAnArray)
{
    Message const first = Measurement(1, 1);
    Message const second = Measurement(2, 1);

    EXPECT_EQ(Placed<Value>(4).Write(MEASUREMENT, ArrayOf({first.get(), second.get()})),
              (Bytes{0x00, 0x00, 0x03, 0xE8}));
    EXPECT_EQ(Placed<Value>(4).Refused(MEASUREMENT, ArrayOf({})), (Refusal{-992, ""}));
}

TEST(ProtocolScanOutputRegisterBlock, GivesBackWhatItHeldOfAnArrayOnEveryPath)
{
    Message const element = Measurement(1, 1);
    Message const array = ArrayOf({element.get()});
    for (uint16 const type : {MEASUREMENT, STAMP, uint16{12}}) // the last two are refused
    {
        Item const item(type, array.get());
        uint64 const elementReferences = wObject_RefCount(element.get());
        uint64 const infoReferences = wObject_RefCount(item.resultInfo.get());

        RefusalOf([&] { Placed<Value>(4).Write(item); });

        EXPECT_EQ(wObject_RefCount(element.get()), elementReferences);
        EXPECT_EQ(wObject_RefCount(item.resultInfo.get()), infoReferences);
    }
}

TEST(ProtocolScanOutputRegisterBlock, HoldsOneReferenceMoreWhileItWritesAnElement)
{
    Message const element = Measurement(1, 1);
    Message const array = ArrayOf({element.get()});
    Item const item(MEASUREMENT, array.get());
    uint64 const elementReferences = wObject_RefCount(element.get());
    uint64 const infoReferences = wObject_RefCount(item.resultInfo.get());
    Placed<WatchingBlock> placed(4);

    placed.Write(item);

    EXPECT_NE(placed.block.resultItem, item.item.get()); // the block receives an item of its own
    EXPECT_EQ(placed.block.elementReferences, elementReferences + 1);
    EXPECT_EQ(placed.block.infoReferences, infoReferences + 1);
}

TEST(ProtocolScanOutputRegisterBlock, RefusesWhatItDoesNotTake)
{
    EXPECT_EQ(Placed<Value>(4).Refused(12, Measurement(1, 1)), (Refusal{-996, "Unsupported message type 12"}));
    EXPECT_EQ(Placed<Value>(4).Refused(STAMP, StampOf({})), UNSUPPORTED);
    EXPECT_EQ(Placed<Stamp>(36).Refused(MEASUREMENT, Measurement(1, 1)), UNSUPPORTED);
    EXPECT_EQ(Placed<Stamp>(36).Refused(STAMP, Null()), UNSUPPORTED);
}

TEST(ProtocolScanOutputRegisterBlock, LooksForANullMessageAheadOfTheType)
{
    Message const null = Null();
    for (uint16 const type : {MEASUREMENT, STAMP, uint16{12}})
    {
        EXPECT_EQ(Placed<Value>(4).Write(type, null), (Bytes{0x80, 0x00, 0x00, 0x00}));
        EXPECT_EQ(Placed<Value>(4).Write(type, ArrayOf({null.get()})), (Bytes{0x80, 0x00, 0x00, 0x00}));
        EXPECT_EQ(Placed<Stamp>(36).Refused(type, null), UNSUPPORTED);
    }
}

TEST(ProtocolScanOutputRegisterBlock, RefusesMessagesThatAreNotWhatTheirTypeSays)
{
    EXPECT_EQ(Placed<Value>(4).Refused(MEASUREMENT, nullptr), UNSUPPORTED);
    EXPECT_EQ(Placed<Decision>(1).Refused(MEASUREMENT, StampOf({})), UNSUPPORTED);
    EXPECT_EQ(Placed<Both>(5).Refused(MEASUREMENT, StampOf({})), UNSUPPORTED);
    EXPECT_EQ(Placed<Stamp>(36).Refused(STAMP, Measurement(1, 1)), UNSUPPORTED);
    EXPECT_EQ(Placed<Value>(4).Refused(MEASUREMENT, ArrayOf({nullptr})), UNSUPPORTED);
    Message const inner = ArrayOf({});
    EXPECT_EQ(Placed<Value>(4).Refused(MEASUREMENT, ArrayOf({inner.get()})), UNSUPPORTED);
}

TEST(ProtocolScanOutputRegisterBlock, RefusesATypeWithTooFewRegisters)
{
    EXPECT_EQ(Placed<Value>(3).Refused(MEASUREMENT, Measurement(1, 1)), NO_ROOM);
    EXPECT_EQ(Placed<Value>(3).Refused(MEASUREMENT, Null()), NO_ROOM);
    EXPECT_EQ(Placed<Decision>(0).Refused(MEASUREMENT, Measurement(1, 1)), NO_ROOM);
    EXPECT_EQ(Placed<Both>(4).Refused(MEASUREMENT, Measurement(1, 1)), NO_ROOM);
    EXPECT_EQ(Placed<Both>(4).Refused(MEASUREMENT, Null()), NO_ROOM);
    EXPECT_EQ(Placed<Stamp>(35).Refused(STAMP, StampOf({})), NO_ROOM);
    EXPECT_EQ(Placed<Stamp>(18, 2).Refused(STAMP, StampOf({})), NO_ROOM);
}

TEST(ProtocolScanOutputRegisterBlock, NeedsALeastNumberOfRegistersOfTwo)
{
    EXPECT_NO_THROW(Placed<Stamp>(19, 2).Write(STAMP, StampOf({})));
    EXPECT_EQ(Placed<Stamp>(18, 2).Refused(STAMP, StampOf({})), NO_ROOM);
    EXPECT_NO_THROW(Placed<Value>(2, 2).Write(MEASUREMENT, Measurement(1, 1)));
    EXPECT_EQ(Placed<Value>(1, 2).Refused(MEASUREMENT, Measurement(1, 1)), NO_ROOM);
    EXPECT_NO_THROW(Placed<Decision>(1, 2).Write(MEASUREMENT, Measurement(1, 1)));
    EXPECT_NO_THROW(Placed<Both>(3, 2).Write(MEASUREMENT, Measurement(1, 1)));
    EXPECT_EQ(Placed<Both>(2, 2).Refused(MEASUREMENT, Measurement(1, 1)), NO_ROOM);
}

TEST(ProtocolScanOutputRegisterBlock, RefusesOtherRegisterSizesWithTheFirstValue)
{
    Refusal const three{-997, "Invalid bytes per register found (3)"};
    EXPECT_EQ(Placed<Value>(4, 3).Refused(MEASUREMENT, Measurement(1, 1)), three);
    EXPECT_EQ(Placed<Value>(4, 3).Refused(MEASUREMENT, Null()), three);
    EXPECT_EQ(Placed<Decision>(4, 3).Refused(MEASUREMENT, Null()), three);
    EXPECT_EQ(Placed<Stamp>(36, 3).Refused(STAMP, StampOf({})), three);
    EXPECT_EQ(Placed<Decision>(4, 0).Refused(MEASUREMENT, Measurement(1, 1)),
              (Refusal{-997, "Invalid bytes per register found (0)"}));
}

TEST(ProtocolScanOutputRegisterBlock, AllocatesForArraysAlone)
{
    Message const msg = Measurement(1.5, 1);
    Item const item(MEASUREMENT, msg.get());
    Placed<Both> placed(5);
    Data const data{item.item.get(), 0};
    uint8 registers[5];

    ZuTest::AllocationCounter const counter;
    placed.block.Serialize(registers, 5, &data, sizeof data);

    EXPECT_EQ(counter.Count(), 0u);
}

TEST(DefaultMeasurementValueRegisterBlock, WritesTheValueTimesThousand)
{
    EXPECT_EQ(Placed<Value>(4).Write(MEASUREMENT, Measurement(1.2345, 0)), (Bytes{0x00, 0x00, 0x04, 0xD3}));
    EXPECT_EQ(Placed<Value>(4).Write(MEASUREMENT, Measurement(-0.001, 0)), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(Placed<Value>(4, 1, false).Write(MEASUREMENT, Measurement(1.2345, 0)), (Bytes{0xD3, 0x04, 0x00, 0x00}));
    EXPECT_EQ(Placed<Value>(2, 2).Write(MEASUREMENT, Measurement(1.2345, 0)), (Bytes{0x00, 0x00, 0xD3, 0x04}));
}

TEST(DefaultMeasurementValueRegisterBlock, MarksWhatIsMissingOrDoesNotFit)
{
    for (double const value : {MISSING, 3000000.0})
    {
        EXPECT_EQ(Placed<Value>(4).Write(MEASUREMENT, Measurement(value, 1)), (Bytes{0x80, 0x00, 0x00, 0x00}));
    }
    EXPECT_EQ(Placed<Value>(4).Write(MEASUREMENT, Null()), (Bytes{0x80, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Placed<Value>(2, 2).Write(MEASUREMENT, Null()), (Bytes{0x00, 0x80, 0x00, 0x00}));
}

TEST(DefaultMeasurementDecisionRegisterBlock, WritesTheDecisionWhateverTheValue)
{
    EXPECT_EQ(Placed<Decision>(1).Write(MEASUREMENT, Measurement(1, 1)), (Bytes{0x01}));
    EXPECT_EQ(Placed<Decision>(1).Write(MEASUREMENT, Measurement(MISSING, 1)), (Bytes{0x01}));
    EXPECT_EQ(Placed<Decision>(1).Write(MEASUREMENT, Null()), (Bytes{0x02}));
    EXPECT_EQ(Placed<Decision>(1, 2).Write(MEASUREMENT, Null()), (Bytes{0x02, 0x00}));
}

TEST(DefaultMeasurementDecisionRegisterBlock, AddsTheBitOfAnInvalidDecision)
{
    Placed<Decision> placed(1);

    EXPECT_EQ(placed.block.GetDecision(1, true), 1);
    EXPECT_EQ(placed.block.GetDecision(1, false), 3);
    EXPECT_EQ(placed.block.GetDecision(0, false), 2);
}

TEST(DefaultMeasurementValueAndDecisionRegisterBlock, LetsNoDecisionOutlastAnInvalidValue)
{
    EXPECT_EQ(Placed<Both>(5).Write(MEASUREMENT, Measurement(1.2345, 1)), (Bytes{0x00, 0x00, 0x04, 0xD3, 0x01}));
    EXPECT_EQ(Placed<Both>(5).Write(MEASUREMENT, Measurement(MISSING, 1)), (Bytes{0x80, 0x00, 0x00, 0x00, 0x02}));
    EXPECT_EQ(Placed<Both>(5).Write(MEASUREMENT, Null()), (Bytes{0x80, 0x00, 0x00, 0x00, 0x02}));
    EXPECT_EQ(Placed<Both>(3, 2).Write(MEASUREMENT, Null()), (Bytes{0x00, 0x80, 0x00, 0x00, 0x02, 0x00}));
}

TEST(DefaultMeasurementValueAndDecisionRegisterBlock, WritesTheDecisionLastOnlyWhenItIsValid)
{
    Placed<Both> overlapping(5);
    overlapping.block.decisionOffset = 3; // overlaps the last byte of the value; the later write remains

    EXPECT_EQ(overlapping.Write(MEASUREMENT, Measurement(1.2345, 1)), (Bytes{0x00, 0x00, 0x04, 0x01, 0xAA}));
    EXPECT_EQ(overlapping.Write(MEASUREMENT, Measurement(MISSING, 1)), (Bytes{0x80, 0x00, 0x00, 0x00, 0xAA}));
}

TEST(DefaultStampRegisterBlock, WritesAllFieldsOfAStamp)
{
    EXPECT_EQ(Placed<Stamp>(36).Write(STAMP, StampOf(THE_STAMP)),
              (Bytes{0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0xFF, 0xFF, 0xFF, 0xFF,
                     0xFF, 0xFF, 0xFF, 0xFE, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18,
                     0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x03, 0x00, 0x00, 0x00}));
}

TEST(DefaultStampRegisterBlock, WritesRegistersOfTwo)
{
    Bytes const written = Placed<Stamp>(20, 2).Write(STAMP, StampOf(THE_STAMP));

    EXPECT_EQ(Part(written, 0, 8), (Bytes{0x22, 0x21, 0x24, 0x23, 0x26, 0x25, 0x28, 0x27}));
    EXPECT_EQ(Part(written, 24, 40), (Bytes{2, 1, 4, 3, 6, 5, 8, 7, 0x03, 0x00, 0x00, 0x00, 0x00, 0xAA, 0xAA, 0xAA}));
}

TEST(DefaultStampRegisterBlock, TakesTimeAndEncoderOfADataMessage)
{
    ZuVision::ZvDataMsg* msg = nullptr;
    ZuVision::ZvDataMsg_Construct(&msg, &THE_STAMP, 5, 6, nullptr);

    Bytes const written = Placed<Stamp>(36).Write(STAMP, Message(msg));

    EXPECT_EQ(Part(written, 8, 24), (Bytes{0, 0, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0, 5}));
}

TEST(DefaultStampRegisterBlock, WritesTheCounterAloneInModeOne)
{
    Bytes expected(36, 0xAA);
    std::copy_n(Bytes{1, 2, 3, 4, 5, 6, 7, 8}.begin(), 8, expected.begin() + 24);

    EXPECT_EQ(Placed<Stamp>(36).Write(STAMP, StampOf(THE_STAMP), 1), expected);
    EXPECT_NE(Placed<Stamp>(36).Write(STAMP, StampOf(THE_STAMP), 2), expected);
    EXPECT_EQ(RefusalOf([] { Placed<Stamp>(36).Write(STAMP, Measurement(1, 1), 1); }), UNSUPPORTED);
}

TEST(DefaultStampRegisterBlock, TellsTheTwoDigitalInputs)
{
    EXPECT_EQ(InputsFor(0x01), 1);
    EXPECT_EQ(InputsFor(0x10), 1);
    EXPECT_EQ(InputsFor(0x02), 2);
    EXPECT_EQ(InputsFor(0x20), 2);
    EXPECT_EQ(InputsFor(0x33), 3);
    EXPECT_EQ(InputsFor(0x44), 0);
}

} // namespace ZuControl::ControlProtocol
