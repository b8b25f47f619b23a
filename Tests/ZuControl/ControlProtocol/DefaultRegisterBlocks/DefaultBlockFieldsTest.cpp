#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"

#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

namespace ZuControl::ControlProtocol
{

namespace
{

/// A block of class `Block` on registers of this size, and its type.
template <typename Block>
struct Placed
{
    explicit Placed(uint8 bytesPerRegister, char const* source = nullptr)
        : type(ZuTest::MakeType<Block>(100, bytesPerRegister, true, source != nullptr))
    {
        RegisterBlockParams params;
        params.dataSource.Set(source != nullptr ? source : "");
        block = std::make_unique<Block>(params, *type);
    }

    /// "name type offset+count" of each field.
    std::vector<std::string> Shape() const
    {
        static constexpr char const* NAMES[] = {"BOOL", "BIT",   "USINT", "INT",   "UINT", "DINT", "UDINT",
                                                "LINT", "ULINT", "REAL",  "LREAL", "TEXT", "RAW"};
        std::vector<std::string> shape;
        for (RegisterField const& field : FieldsOf(*block))
        {
            shape.push_back(field.name + ' ' + NAMES[static_cast<size_t>(field.type)] + ' ' +
                            std::to_string(field.offset) + '+' + std::to_string(field.count));
        }
        return shape;
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    std::unique_ptr<Block> block;
};

using Shape = std::vector<std::string>;

} // namespace

TEST(DefaultBlockFields, AreTheFieldsThatTheBlocksEncodeInRegistersOfOneByte)
{
    EXPECT_EQ(Placed<DefaultControlInputRegisterBlock>(1).Shape(),
              (Shape{"requestId UINT 0+2", "commandId USINT 2+1", "text TEXT 3+64"}));
    EXPECT_EQ(Placed<DefaultControlOutputRegisterBlock>(1).Shape(), (Shape{"requestId UINT 0+2", "status USINT 2+1"}));
    EXPECT_EQ(Placed<DefaultSystemStateRegisterBlock>(1).Shape(),
              (Shape{"value64 ULINT 0+8", "state0 USINT 8+1", "jobNameLength USINT 9+1", "jobName TEXT 10+64",
                     "state2 USINT 74+1", "state3 USINT 75+1"}));
    EXPECT_EQ(Placed<DefaultScannerStateRegisterBlock>(1).Shape(),
              (Shape{"encoder LINT 0+8", "syncTime ULINT 8+8", "state0 USINT 16+1", "state1 USINT 17+1"}));
    EXPECT_EQ(
        Placed<DefaultStampRegisterBlock>(1, "a").Shape(),
        (Shape{"stamp LINT 0+8", "encoder LINT 8+8", "time ULINT 16+8", "counter ULINT 24+8", "inputs USINT 32+1"}));
    EXPECT_EQ(Placed<DefaultMeasurementValueRegisterBlock>(1, "a").Shape(), (Shape{"valueAlone DINT 0+4"}));
    EXPECT_EQ(Placed<DefaultMeasurementDecisionRegisterBlock>(1, "a").Shape(), (Shape{"decisionAlone USINT 0+1"}));
    EXPECT_EQ(Placed<DefaultMeasurementValueAndDecisionRegisterBlock>(1, "a").Shape(),
              (Shape{"value DINT 0+4", "decision USINT 4+1"}));
}

TEST(DefaultBlockFields, AreNumbersOfWholeRegistersInRegistersOfTwoBytes)
{
    EXPECT_EQ(Placed<DefaultControlOutputRegisterBlock>(2).Shape(), (Shape{"requestId UINT 0+1", "status UINT 1+1"}));
    EXPECT_EQ(Placed<DefaultMeasurementValueAndDecisionRegisterBlock>(2, "a").Shape(),
              (Shape{"value DINT 0+2", "decision UINT 2+1"}));
}

TEST(DefaultBlockFields, AreNoneWhereTheyShareRegisters)
{
    EXPECT_EQ(Placed<DefaultSystemStateRegisterBlock>(2).Shape(), Shape());
    EXPECT_EQ(Placed<DefaultControlInputRegisterBlock>(2).Shape(), Shape());

    Placed<DefaultControlOutputRegisterBlock> overlapping(1);
    overlapping.block->statusOffset = 1;
    EXPECT_EQ(overlapping.Shape(), Shape());
}

TEST(DefaultBlockFields, HaveScaleUnitAndMarkOfAnInvalidValue)
{
    Placed<DefaultMeasurementValueAndDecisionRegisterBlock> const length(2, "profile/zMax");

    std::vector<RegisterField> const fields = FieldsOf(*length.block);

    ASSERT_EQ(fields.size(), 2u);
    EXPECT_EQ(fields[0].divisor, 1000u);
    EXPECT_EQ(fields[0].unit, "mm");
    EXPECT_EQ(fields[0].invalid, 0x80000000u);
    EXPECT_EQ(fields[1].divisor, 1u);
    EXPECT_EQ(fields[1].invalid, 2u);
    EXPECT_EQ(FieldsOf(*Placed<DefaultMeasurementValueRegisterBlock>(2, "profile/points").block)[0].unit, "");
}

TEST(DefaultBlockFields, SayWhichOfThemCarryCommands)
{
    auto const fields = FieldsOf(*Placed<DefaultControlInputRegisterBlock>(1).block);
    EXPECT_EQ(fields[0].role, FieldRole::COMMAND_REQUEST_ID);
    EXPECT_EQ(fields[1].role, FieldRole::COMMAND_ID);
    EXPECT_EQ(fields[2].role, FieldRole::COMMAND_TEXT);
    EXPECT_TRUE(fields[0].isWritable && fields[1].isWritable && fields[2].isWritable);

    auto const answer = FieldsOf(*Placed<DefaultControlOutputRegisterBlock>(1).block);
    EXPECT_EQ(answer[0].role, FieldRole::ANSWER_REQUEST_ID);
    EXPECT_EQ(answer[1].role, FieldRole::ANSWER_STATUS);
    EXPECT_FALSE(answer[0].isWritable || answer[1].isWritable);
}

TEST(DefaultBlockFields, AreNoneForAClassThatDerivesFromADefaultBlockAndDoesNotDescribeItself)
{
    struct Foreign final : DefaultStampRegisterBlock
    {
        using DefaultStampRegisterBlock::DefaultStampRegisterBlock;
    };

    EXPECT_EQ(Placed<Foreign>(1, "a").Shape(), Shape());
    EXPECT_EQ(Placed<ProtocolRegisterBlock>(1).Shape(), Shape());
}

TEST(DefaultBlockFields, AreThoseThatABlockDescribes)
{
    struct Described final : DefaultStampRegisterBlock, IDescribedBlock
    {
        using DefaultStampRegisterBlock::DefaultStampRegisterBlock;

        std::vector<RegisterField> Fields() const override
        {
            FieldList list(*this);
            list.Number("own", FieldType::REAL, 4);
            return list.Take();
        }
    };

    EXPECT_EQ(Placed<Described>(2, "a").Shape(), (Shape{"own REAL 2+2"}));
}

} // namespace ZuControl::ControlProtocol
