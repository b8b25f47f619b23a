#include "Plugins/ModbusTcp/Blocks/OrderedBlock.h"
#include "Plugins/ModbusTcp/Blocks/BlockArguments.h"
#include "Support/RandomDraws.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"

#include <nlohmann/json.hpp>

#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace ModbusTcp
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::TestFrame;
using namespace ZuControl::ControlProtocol;

using Registers = std::vector<uint16>;

class OrderedBlockTest : public BlockFixture
{
protected:
    static std::string OrderShown(Block& block)
    {
        return Zu::Properties::JsonSerializer::Serialize(block).at("order");
    }

    Registers Measured(uint16 outputId, std::string const& order)
    {
        auto const block = Place("Measurement", outputId, "m", order);
        return EncodeFirst(*block, TestFrame().Measurement("m", 70000.125, 1)); // 70000125 is 0x042C1DFD
    }

    static LayoutEntry EntryAt(Layout const& layout, uint16 outputId)
    {
        for (LayoutEntry const& entry : layout.entries)
        {
            if (entry.outputId == outputId)
            {
                return entry;
            }
        }
        ADD_FAILURE() << "no entry at " << outputId;
        return {};
    }

    uint32 Fingerprinted()
    {
        return Fingerprint::Of({ReadLayout(assembly)});
    }
};

TEST_F(OrderedBlockTest, ShowsAMeasurementInEachOfTheFourOrders)
{
    EXPECT_EQ(Measured(300, "ABCD"), (Registers{0x042C, 0x1DFD, 0x0001}));
    EXPECT_EQ(Measured(303, "CDAB"), (Registers{0x1DFD, 0x042C, 0x0001}));
    EXPECT_EQ(Measured(306, "BADC"), (Registers{0x2C04, 0xFD1D, 0x0100}));
    EXPECT_EQ(Measured(309, "DCBA"), (Registers{0xFD1D, 0x2C04, 0x0100}));
    EXPECT_EQ(Measured(312, ""), (Registers{0x042C, 0x1DFD, 0x0001}));
}

TEST_F(OrderedBlockTest, KeepsItsOrderWhenThatOfTheServiceChanges)
{
    auto const own = Place("MeasurementValue", 300, "m", "ABCD");
    auto const other = Place("MeasurementValue", 302, "m");
    TestFrame frame;
    frame.Measurement("m", 70000.125);

    assembly.ChangeBigEndianSupportedBlocks(false);

    EXPECT_EQ(EncodeFirst(*own, frame), (Registers{0x042C, 0x1DFD}));
    EXPECT_EQ(EncodeFirst(*other, frame), (Registers{0x1DFD, 0x042C}));
    SetOrder(300, "default");
    EXPECT_EQ(EncodeFirst(*own, frame), (Registers{0x1DFD, 0x042C}));
}

TEST_F(OrderedBlockTest, FollowsEachOfTheFourOrdersOfTheService)
{
    auto const own = Place("Measurement", 300, "m", "ABCD");
    auto const other = Place("Measurement", 303, "m");
    TestFrame frame;
    frame.Measurement("m", 70000.125, 1);
    std::pair<BlockOrder, Registers> const expected[] = {{BlockOrder::BADC, {0x2C04, 0xFD1D, 0x0100}},
                                                         {BlockOrder::DCBA, {0xFD1D, 0x2C04, 0x0100}},
                                                         {BlockOrder::CDAB, {0x1DFD, 0x042C, 0x0001}},
                                                         {BlockOrder::ABCD, {0x042C, 0x1DFD, 0x0001}}};
    for (auto const& [order, registers] : expected)
    {
        SCOPED_TRACE(NameOf(order));
        ChangeOrder(assembly, order);
        EXPECT_EQ(EncodeFirst(*own, frame), (Registers{0x042C, 0x1DFD, 0x0001}));
        EXPECT_EQ(EncodeFirst(*other, frame), registers);
        std::vector<uint8> bytes(6, 0xAA);
        dynamic_cast<IModbusBlock&>(*other).WriteBlank(std::nullopt, bytes);
        LayoutEntry const entry = EntryAt(ReadLayout(assembly), 303);
        EXPECT_EQ((BlockOrder{entry.isBigEndian, entry.areBytesSwapped}), order);
        EXPECT_EQ(RegistersOf(bytes)[order.isBigEndian ? 0 : 1], order.areBytesSwapped ? 0x0080 : 0x8000);
    }
}

TEST_F(OrderedBlockTest, ReadsACommandInTheOrderOfTheService)
{
    auto const block = Place("ControlInput", 0);
    ChangeOrder(assembly, BlockOrder::BADC);
    std::vector<uint8> bytes(132, 0);
    bytes[0] = 0x34;
    bytes[1] = 0x12;
    bytes[2] = 3;
    ControlRegisterCommandData command;

    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());

    EXPECT_EQ(command.requestId, 0x1234);
    EXPECT_EQ(command.commandId, 3);
    SetOrder(0, "ABCD"); // its own order wins
    std::swap(bytes[2], bytes[3]);
    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());
    EXPECT_EQ(command.requestId, 0x3412);
}

TEST_F(OrderedBlockTest, OrdersTheNumbersOfTheStateBlocks)
{
    DefaultSystemStateRegisterBlock::DefaultSystemStateData system{};
    system.value64 = 0x0102030405060708;
    system.stateByte0 = 2;
    system.jobFileNameLength = 1;
    std::memcpy(system.jobFileName, "j", 1);
    auto const registers = Encode(*Place("System", 300, "", "DCBA"), system);
    EXPECT_EQ(Registers(registers.begin(), registers.begin() + 8),
              (Registers{0x0807, 0x0605, 0x0403, 0x0201, 0x0200, 0x0100, 'j' << 8, 0}));

    DefaultScannerStateRegisterBlock::DefaultScannerStateData const scanner{1, 1, -2, 0x1122334455667788};
    EXPECT_EQ(Encode(*Place("Scanner", 400, "", "BADC"), scanner),
              (Registers{0xFFFF, 0xFFFF, 0xFFFF, 0xFEFF, 0x2211, 0x4433, 0x6655, 0x8877, 0x0100, 0x0100}));

    DefaultControlOutputRegisterBlock::DefaultCommandResultData const result{0x1234, CommandStatusDone};
    EXPECT_EQ(Encode(*Place("ControlOutput", 500, "", "BADC"), result), (Registers{0x3412, 0x0200}));
}

TEST_F(OrderedBlockTest, OrdersAStamp)
{
    auto const block = Place("Stamp", 150, "s", "DCBA");
    TestFrame frame;
    frame.Stamp("s", {0x11, 0x0A0B0C0D0E0F1011, 0x1112131415161718, -2, 0x0102030405060708});

    Registers const registers = EncodeFirst(*block, frame);

    EXPECT_EQ(Registers(registers.begin(), registers.begin() + 8),
              (Registers{0x0807, 0x0605, 0x0403, 0x0201, 0xFEFF, 0xFFFF, 0xFFFF, 0xFFFF}));
    EXPECT_EQ(registers[16], 0x0100);
}

TEST_F(OrderedBlockTest, ReadsACommandWhoseBytesAreSwapped)
{
    auto const block = Place("ControlInput", 0, "", "BADC");
    std::vector<uint8> bytes(132, 0);
    std::vector<uint8> const begin = {0x34, 0x12, 0x05, 0x00, 'a', 0x00, 'b', 0x00};
    std::copy(begin.begin(), begin.end(), bytes.begin());
    ControlRegisterCommandData command;

    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());

    EXPECT_EQ(command.requestId, 0x1234);
    EXPECT_EQ(command.commandId, 5);
    EXPECT_STREQ(command.text, "ab");
    EXPECT_EQ(RefusalOf([&] { block->Deserialize(&command, sizeof command, nullptr, 132); }).status,
              Zu::Status::WRONG_BUFFER_SIZE);
    SetOrder(0, "CDAB"); // the numbers of a command take one register each
    bytes[0] = 0x12;
    bytes[1] = 0x34;
    block->Deserialize(&command, sizeof command, bytes.data(), bytes.size());
    EXPECT_EQ(command.requestId, 0x1234);
}

TEST_F(OrderedBlockTest, RefusesWrongSizesInAnyOrder)
{
    auto const block = Place("ControlOutput", 500, "", "DCBA");
    uint8 bytes[4] = {1, 2, 3, 4};
    EXPECT_EQ(RefusalOf([&] { block->Serialize(bytes, 4, bytes, 3); }).status, Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(bytes[0], 1) << "a refusal writes nothing";
}

TEST_F(OrderedBlockTest, ShowsItsOrderInItsDocument)
{
    EXPECT_EQ(OrderShown(*Place("MeasurementValue", 300, "m")), "");
    auto const block = Place("MeasurementValue", 302, "m", "CDAB");
    EXPECT_EQ(OrderShown(*block), "CDAB");
    SetOrder(302, "");
    EXPECT_EQ(OrderShown(*block), "CDAB") << "an empty text leaves it";
    SetOrder(302, "default");
    EXPECT_EQ(OrderShown(*block), "");
}

TEST_F(OrderedBlockTest, RefusesAnUnknownOrderBeforeAnythingMoves)
{
    Place("Decision", 300, "m");
    ZuTest::LogRecorder log;
    ModbusAddBlockParams add;
    add.autoShift.Set(true);
    for (char const* const order : {"abcd", "CDAB"})
    {
        auto& block = dynamic_cast<ModbusBlockParams&>(add.blocks.Add());
        block.type.Set("Decision");
        block.dataSource.Set("m");
        block.outputId.Set(300);
        block.order.Set(order);
    }

    assembly.Add(add);

    EXPECT_EQ(log.CountOfText("There is no order abcd. The orders are ABCD, CDAB, BADC, DCBA and default."), 1u);
    EXPECT_EQ(ReadLayout(assembly).entries.size(), 2u);
    EXPECT_EQ(EntryAt(ReadLayout(assembly), 301).isBigEndian, true);

    ModbusUpdateBlockParams update;
    update.outputId.Set(300);
    update.newParams.outputId.Set(400);
    update.order.Set("ABDC");
    EXPECT_EQ(RefusalOf([&] { assembly.Update(update); }),
              (Refusal{Zu::Status::BAD_ARGUMENT,
                       "There is no order ABDC. The orders are ABCD, CDAB, BADC, DCBA and default."}));
    EntryAt(ReadLayout(assembly), 300);
}

TEST_F(OrderedBlockTest, RefusesAnOrderForATypeWithoutOne)
{
    RegisterBlockInfoParams plain;
    plain.type = "Plain";
    plain.registerCount = 1;
    plain.bytesPerRegister = 2;
    plain.maxInstanceCount = 9;
    plain.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
    assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(plain));
    Place("Plain", 10);
    ZuTest::LogRecorder log;

    ModbusAddBlockParams add;
    auto& block = dynamic_cast<ModbusBlockParams&>(add.blocks.Add());
    block.type.Set("Plain");
    block.order.Set("ABCD");
    EXPECT_EQ(RefusalOf([&] { assembly.Add(add); }).status, Zu::Status::FAILURE);
    EXPECT_EQ(log.CountOfText("Blocks of type Plain have no order of their own."), 1u);
    EXPECT_EQ(RefusalOf([&] { SetOrder(10, "CDAB"); }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "Blocks of type Plain have no order of their own."}));
}

TEST_F(OrderedBlockTest, HasItsOrderInPlcFiles)
{
    for (char const* const type : {"ControlInput", "ControlOutput", "System", "Scanner", "Stamp", "Measurement",
                                   "MeasurementValue", "Decision", "MeasurementReal"})
    {
        assembly.ResetRegisterAssembly();
        auto const block = Place(type, 300, "m");
        std::vector<RegisterField> const fields = FieldsOf(*block);
        EXPECT_FALSE(fields.empty()) << type;
        EXPECT_TRUE(std::ranges::all_of(fields, [](auto const& one) { return !one.order.has_value(); })) << type;
        for (auto const& [name, order] : {std::pair("ABCD", BlockOrder::ABCD), std::pair("CDAB", BlockOrder::CDAB),
                                          std::pair("BADC", BlockOrder::BADC), std::pair("DCBA", BlockOrder::DCBA)})
        {
            SetOrder(300, name);
            auto const ordered = FieldsOf(*block);
            EXPECT_EQ(ordered.size(), fields.size()) << type;
            EXPECT_TRUE(std::ranges::all_of(ordered, [wanted = order](auto const& one) { return one.order == wanted; }))
                << type;
        }
    }
}

TEST_F(OrderedBlockTest, GivesOneFingerprintToOneLayoutHoweverItsOrderWasChosen)
{
    Place("Measurement", 300, "m");
    uint32 const ofTheService = Fingerprinted();
    SetOrder(300, "ABCD");
    EXPECT_EQ(Fingerprinted(), ofTheService);

    std::vector<uint32> others{ofTheService};
    for (char const* const order : {"CDAB", "BADC", "DCBA"})
    {
        SetOrder(300, order);
        EXPECT_EQ(std::ranges::count(others, Fingerprinted()), 0) << order;
        others.push_back(Fingerprinted());
    }
    SetOrder(300, "CDAB");
    uint32 const little = Fingerprinted();
    SetOrder(300, "default");
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_EQ(Fingerprinted(), little);
    for (BlockOrder const order : {BlockOrder::CDAB, BlockOrder::BADC, BlockOrder::DCBA})
    {
        SetOrder(300, NameOf(order));
        ChangeOrder(assembly, BlockOrder::ABCD);
        uint32 const ofTheBlock = Fingerprinted();
        SetOrder(300, "default");
        ChangeOrder(assembly, order);
        EXPECT_EQ(Fingerprinted(), ofTheBlock) << NameOf(order);
    }
}

namespace
{

using Actions = ModbusAssemblyActions;

std::shared_ptr<Zu::Params::Group> SomeArguments(ZuTest::RandomDraws& draws, std::string const& action)
{
    static constexpr char const* ORDERS[] = {"", "ABCD", "CDAB", "BADC", "DCBA", "default", "XYZ"};
    static constexpr char const* TYPES[] = {"Measurement", "MeasurementReal", "Stamp", "ControlInput"};
    if (action == Actions::REGISTER_ASSEMBLY_ACTION_ID_UPDATE)
    {
        auto const params = std::make_shared<ModbusUpdateBlockParams>();
        params->outputId.Set(static_cast<uint16>(draws.Below(300)));
        params->newParams.outputId.Set(static_cast<uint16>(draws.OneIn(2) ? 65535 : draws.Below(300)));
        params->autoShift.Set(draws.OneIn(2));
        params->order.Set(ORDERS[draws.Below(7)]);
        return params;
    }
    auto const params = std::make_shared<ModbusAddBlockParams>();
    params->autoShift.Set(draws.OneIn(2));
    for (uint32 i = 1 + draws.Below(4); i > 0; --i)
    {
        auto& block = dynamic_cast<ModbusBlockParams&>(params->blocks.Add());
        block.type.Set(TYPES[draws.Below(4)]);
        block.dataSource.Set("m" + std::to_string(draws.Below(5)));
        block.outputId.Set(static_cast<uint16>(draws.Below(300)));
        block.order.Set(ORDERS[draws.Below(7)]);
    }
    return params;
}

} // namespace

TEST_F(OrderedBlockTest, IsForeseenByAPreview)
{
    ZuTest::RandomDraws draws(20261122);
    Actions actions(assembly);
    for (int i = 0; i < ZuTest::OperationsOf(5'000); ++i)
    {
        if (draws.OneIn(20))
        {
            assembly.ResetRegisterAssembly();
            ChangeOrder(assembly, {draws.OneIn(2), draws.OneIn(2)});
        }
        std::string const action =
            draws.OneIn(2) ? Actions::REGISTER_ASSEMBLY_ACTION_ID_ADD : Actions::REGISTER_ASSEMBLY_ACTION_ID_UPDATE;
        auto const params = SomeArguments(draws, action);
        auto const copy = actions.CopyForPreview();
        auto const foreseen = copy->ActionParams(action);
        Zu::Properties::JsonSerializer::Deserialize(*foreseen, Zu::Properties::JsonSerializer::Serialize(*params));

        Refusal const planned = RefusalOf([&] { copy->InvokeAction(action, *foreseen); });
        ASSERT_EQ(RefusalOf([&] { actions.InvokeAction(action, *params); }), planned) << draws;
        ASSERT_EQ(Fingerprint::Of({copy->Read()}), Fingerprinted()) << draws;
    }
}

TEST_F(OrderedBlockTest, IsKeptInADocumentOfItsBlocks)
{
    Place("Measurement", 300, "m", "DCBA");
    Place("Measurement", 310, "m");
    Layout const before = ReadLayout(assembly);
    nlohmann::json document{{"blocks", nlohmann::json::array()}};
    assembly.BeginLock();
    for (auto const& block : assembly.AddedRegisterBlocks())
    {
        document["blocks"].push_back(Zu::Properties::JsonSerializer::Serialize(*block));
    }
    assembly.EndLock();
    Actions actions(assembly);

    assembly.ResetRegisterAssembly();
    auto const params = actions.GetActionParams("add");
    Zu::Properties::JsonSerializer::Deserialize(*params, document);
    actions.InvokeAction("add", *params);

    EXPECT_EQ(Fingerprint::Of({before}), Fingerprinted());
    EXPECT_STREQ(NameOf({EntryAt(before, 300).isBigEndian, EntryAt(before, 300).areBytesSwapped}), "DCBA");
}

TEST_F(OrderedBlockTest, HasTheOrderOfTheServiceInADocumentOfAnOlderVersion)
{
    Actions actions(assembly);
    auto const params = actions.GetActionParams("add");
    Zu::Properties::JsonSerializer::Deserialize(
        *params, {{"blocks", {{{"type", "Measurement"}, {"outputId", 300}, {"dataSource", "m"}}}}});

    actions.InvokeAction("add", *params);

    EXPECT_STREQ(NameOf({EntryAt(ReadLayout(assembly), 300).isBigEndian, false}), "ABCD");
    EXPECT_EQ(RefusalOf([&] { actions.GetActionParams("jump"); }).status, Zu::Status::NOT_FOUND);
}

} // namespace ModbusTcp
