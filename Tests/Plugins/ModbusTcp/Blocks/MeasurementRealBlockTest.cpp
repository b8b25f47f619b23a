#include "Plugins/ModbusTcp/Blocks/MeasurementRealBlock.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"

#include <limits>
#include <memory>
#include <vector>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::FieldsOf;
using ZuControl::ControlProtocol::FieldType;
using ZuTest::RefusalOf;
using ZuTest::TestFrame;

using Registers = std::vector<uint16>;

class MeasurementRealBlockTest : public BlockFixture
{
protected:
    static constexpr double MOST = std::numeric_limits<float>::max();
    Registers const missing{0x7FC0, 0};
};

TEST_F(MeasurementRealBlockTest, ShowsTheValueInItsUnit)
{
    struct Case
    {
        double value;
        Registers registers;
    };
    std::vector<Case> const cases = {
        {123.456, {0x42F6, 0xE979}}, {-1.5, {0xBFC0, 0}},       {0.0, {0, 0}},
        {-0.0, {0x8000, 0}},         {1e-45, {0, 1}},           {16777217.0, {0x4B80, 0}},
        {MOST, {0x7F7F, 0xFFFF}},    {-MOST, {0xFF7F, 0xFFFF}},
    };
    auto const block = Place("MeasurementReal", 300, "m");
    for (Case const& one : cases)
    {
        EXPECT_EQ(EncodeFirst(*block, TestFrame().Measurement("m", one.value)), one.registers) << one.value;
    }
}

TEST_F(MeasurementRealBlockTest, ShowsNaNForAValueThatIsMissingOrDoesNotFit)
{
    auto const block = Place("MeasurementReal", 300, "m");
    for (double const value : {ZuVision::MISSING_MEASUREMENT, std::numeric_limits<double>::quiet_NaN(),
                               -std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), MOST * 1.0001, -MOST * 1.0001})
    {
        EXPECT_EQ(EncodeFirst(*block, TestFrame().Measurement("m", value)), missing) << value;
    }
    EXPECT_EQ(EncodeFirst(*block, TestFrame().Null("m")), missing);
}

TEST_F(MeasurementRealBlockTest, FollowsTheOrderOfTheService)
{
    auto const block = Place("MeasurementReal", 300, "m");
    assembly.ChangeBigEndianSupportedBlocks(false);

    EXPECT_EQ(EncodeFirst(*block, TestFrame().Measurement("m", 123.456)), (Registers{0xE979, 0x42F6}));
    EXPECT_EQ(EncodeFirst(*block, TestFrame().Null("m")), (Registers{0, 0x7FC0}));
}

TEST_F(MeasurementRealBlockTest, ShowsNaNBeforeTheFirstResult)
{
    Place("MeasurementReal", 300, "m");
    Place("MeasurementReal", 302, "m", "DCBA");
    auto const image = std::make_unique<RegisterImage>();
    ModbusCounters counters;
    ResultEncoder encoder(*image, counters);

    encoder.Install(RegisterLayout::Take(assembly));

    Registers registers(4);
    image->Read(300, registers);
    EXPECT_EQ(registers, (Registers{0x7FC0, 0, 0, 0xC07F}));
}

TEST_F(MeasurementRealBlockTest, IsATagOfTypeRealInPlcFiles)
{
    auto const fields = FieldsOf(*Place("MeasurementReal", 300, "profile/zMax"));

    ASSERT_EQ(fields.size(), 1u);
    EXPECT_EQ(fields[0].name, "real");
    EXPECT_EQ(fields[0].type, FieldType::REAL);
    EXPECT_EQ(fields[0].count, 2);
    EXPECT_EQ(fields[0].divisor, 1u);
    EXPECT_EQ(fields[0].unit, "mm");
    EXPECT_EQ(fields[0].invalid, 0x7FC00000u);
    EXPECT_EQ(fields[0].order, std::nullopt);
}

TEST_F(MeasurementRealBlockTest, RefusesAResultThatIsNoMeasurement)
{
    auto const block = Place("MeasurementReal", 300, "m");

    EXPECT_EQ(RefusalOf([&] { EncodeFirst(*block, TestFrame().Stamp("m", {})); }).status, Zu::Status::NOT_SUPPORTED);
}

} // namespace ModbusTcp
