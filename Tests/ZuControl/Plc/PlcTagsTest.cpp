#include "ZuControl/Plc/PlcTags.h"

#include "Support/FakeControlInstance.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

namespace ZuControl::Plc
{

using namespace ControlProtocol;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// Describes one coil, and a field that `fieldCount` makes too long for the block.
struct BlockWithCoil final : ProtocolRegisterBlock, IDescribedBlock
{
    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    std::vector<RegisterField> Fields() const override
    {
        RegisterField coil;
        coil.name = "coil";
        coil.type = FieldType::BOOL;
        coil.area = FieldArea::COILS;
        coil.offset = 7;
        coil.source = "of/coil";
        RegisterField word;
        word.name = "word";
        word.type = FieldType::UINT;
        word.count = fieldCount;
        word.order = BlockOrder::BADC;
        return {coil, word};
    }

    static inline uint16 fieldCount = 1;
};

} // namespace

class PlcTags : public testing::Test
{
protected:
    PlcTags()
    {
        auto params = ZuTest::TypeParams<DefaultMeasurementValueAndDecisionRegisterBlock>("Measurement", 3);
        params.hasDataSource = true;
        Offer(params);
        Offer(ZuTest::TypeParams<>("Foreign", 4));
        Offer(ZuTest::TypeParams<BlockWithCoil>("Coil", 2));
        instance.assemblies["r"] = &assembly;
    }

    void Offer(RegisterBlockInfoParams params)
    {
        params.bytesPerRegister = 2;
        assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
    }

    void Place(char const* type, uint16 id, char const* source = "")
    {
        AddBlockParams params;
        auto& block = params.blocks.Add();
        block.type.Set(type);
        block.outputId.Set(id);
        block.dataSource.Set(source);
        assembly.Add(params);
    }

    ZuTest::CallLog calls;
    ZuTest::FakeControlInstance instance{calls, "a"};
    ProtocolRegisterAssemblyBase assembly{true, 100, 199, "r"};
};

TEST_F(PlcTags, AreTheFieldsOfTheBlocksAtTheirAddresses)
{
    Place("Measurement", 110, "profile/zMax");
    Place("Measurement", 100, "b");

    PlcTagList const list = ReadTags(instance);

    EXPECT_EQ(list.service, "a");
    EXPECT_EQ(list.displayName, "a shown");
    EXPECT_EQ(list.assemblies, std::vector<std::string>{"r"});
    EXPECT_EQ(list.bytesPerRegister, 2);
    ASSERT_EQ(list.tags.size(), 4u);
    EXPECT_EQ(list.tags[0].name, "b_value");
    EXPECT_EQ(list.tags[2].name, "profile_zMax_value");
    EXPECT_EQ(list.tags[2].address, 110u);
    EXPECT_EQ(list.tags[3].name, "profile_zMax_decision");
    EXPECT_EQ(list.tags[3].address, 112u);
    EXPECT_EQ(list.tags[3].blockAddress, 110u);
    EXPECT_EQ(list.tags[3].source, "profile/zMax");
    EXPECT_EQ(list.tags[3].blockType, "Measurement");
    EXPECT_EQ(list.tags[3].assembly, "r");
}

TEST_F(PlcTags, HaveTheOrderOfTheServiceOrTheirOwn)
{
    Place("Measurement", 100, "a");
    Place("Coil", 110);
    EXPECT_EQ(ReadTags(instance).order, BlockOrder::ABCD);

    assembly.ChangeBigEndianSupportedBlocks(false);
    PlcTagList const list = ReadTags(instance);

    EXPECT_EQ(list.order, BlockOrder::CDAB);
    EXPECT_EQ(list.tags[0].order, BlockOrder::CDAB);
    EXPECT_EQ(list.tags[3].order, BlockOrder::BADC);
}

TEST_F(PlcTags, OfABlockThatDoesNotDescribeItselfAreItsRegisters)
{
    Place("Foreign", 120);

    PlcTagList const list = ReadTags(instance);

    ASSERT_EQ(list.tags.size(), 1u);
    EXPECT_EQ(list.tags[0].name, "Foreign_raw");
    EXPECT_EQ(list.tags[0].address, 120u);
    EXPECT_EQ(list.tags[0].field.type, FieldType::RAW);
    EXPECT_EQ(list.tags[0].field.count, 4);
    EXPECT_EQ(list.tags[0].field.comment, "the plug-in does not describe blocks of the type Foreign");
}

TEST_F(PlcTags, OfABlockThatDescribesRegistersBehindItsEndAreItsRegisters)
{
    Place("Coil", 120);
    BlockWithCoil::fieldCount = 3;
    PlcTagList const list = ReadTags(instance);
    BlockWithCoil::fieldCount = 1;

    ASSERT_EQ(list.tags.size(), 1u);
    EXPECT_EQ(list.tags[0].field.type, FieldType::RAW);
    EXPECT_EQ(list.tags[0].field.count, 2);
}

TEST_F(PlcTags, OfCoilsHaveTheirOwnAddressAndSource)
{
    Place("Coil", 120);

    PlcTagList const list = ReadTags(instance);

    ASSERT_EQ(list.tags.size(), 2u);
    EXPECT_EQ(list.tags[0].name, "of_coil_coil");
    EXPECT_EQ(list.tags[0].address, 7u);
    EXPECT_EQ(list.tags[1].name, "Coil_word");
    EXPECT_EQ(list.tags[1].address, 120u);
}

TEST_F(PlcTags, OfAServiceWithoutRegistersAreRefused)
{
    instance.assemblies.clear();
    EXPECT_EQ(RefusalOf([this] { ReadTags(instance); }),
              (Refusal{Zu::Status::NOT_SUPPORTED, "The service a has no registers."}));
}

TEST_F(PlcTags, OfBlocksWithNumbersInPlaceOfAddressesAreRefused)
{
    ProtocolRegisterAssemblyBase numbered{false, 0, 10, "n"};
    numbered.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(ZuTest::TypeParams<>("T", 1)));
    AddBlockParams params;
    params.blocks.Add().type.Set("T");
    numbered.Add(params);
    instance.assemblies = {{"n", &numbered}};

    EXPECT_EQ(RefusalOf([this] { ReadTags(instance); }),
              (Refusal{Zu::Status::NOT_SUPPORTED, "The blocks of the connection map n have no register addresses."}));
}

} // namespace ZuControl::Plc
