#include "Plugins/ModbusTcp/Blocks/OrderTestBlock.h"
#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"

#include <memory>
#include <vector>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::FieldsOf;
using ZuControl::ControlProtocol::FieldType;
using ZuTest::RefusalOf;

using Registers = std::vector<uint16>;

class OrderTestBlockTest : public BlockFixture
{
};

TEST_F(OrderTestBlockTest, ShowsItsValuesInEachOrder)
{
    LayoutFacts const facts;
    auto const block = Place("OrderTest", 300);
    EXPECT_EQ(Encode(*block, facts), (Registers{0x3039, 0xCFC7, 0x4996, 0x02D2, 0xB669, 0xFD2E, 0xAB54, 0xA98C,
                                                0xEB1F, 0x0AD2, 0xEEDD, 0xEF0B, 0x8216, 0x7EEB, 0x42F6, 0xE979,
                                                0x40FE, 0x240C, 0x9FBE, 0x76C9, 0x4142, 0x4344, 0x4546, 0x4748}));
    SetOrder(300, "CDAB");
    EXPECT_EQ(Encode(*block, facts), (Registers{0x3039, 0xCFC7, 0x02D2, 0x4996, 0xFD2E, 0xB669, 0x0AD2, 0xEB1F,
                                                0xA98C, 0xAB54, 0x7EEB, 0x8216, 0xEF0B, 0xEEDD, 0xE979, 0x42F6,
                                                0x76C9, 0x9FBE, 0x240C, 0x40FE, 0x4142, 0x4344, 0x4546, 0x4748}));
    SetOrder(300, "BADC");
    EXPECT_EQ(Encode(*block, facts), (Registers{0x3930, 0xC7CF, 0x9649, 0xD202, 0x69B6, 0x2EFD, 0x54AB, 0x8CA9,
                                                0x1FEB, 0xD20A, 0xDDEE, 0x0BEF, 0x1682, 0xEB7E, 0xF642, 0x79E9,
                                                0xFE40, 0x0C24, 0xBE9F, 0xC976, 0x4241, 0x4443, 0x4645, 0x4847}));
}

TEST_F(OrderTestBlockTest, ShowsItsValuesToClientsWithoutAScan)
{
    Place("OrderTest", 300);
    auto const image = std::make_unique<RegisterImage>();
    ModbusCounters counters;
    ResultEncoder encoder(*image, counters);

    encoder.Install(RegisterLayout::Take(assembly));

    Registers registers(4);
    image->Read(300, registers);
    EXPECT_EQ(registers, (Registers{0x3039, 0xCFC7, 0x4996, 0x02D2}));
}

TEST_F(OrderTestBlockTest, IsAListOfConstantsInPlcFiles)
{
    auto const fields = FieldsOf(*Place("OrderTest", 300));

    ASSERT_EQ(fields.size(), 9u);
    uint16 next = 0;
    for (auto const& field : fields)
    {
        EXPECT_EQ(field.offset, next) << field.name;
        next = static_cast<uint16>(field.offset + field.count);
    }
    EXPECT_EQ(next, OrderTestBlock::REGISTERS);
    EXPECT_EQ(fields[6].type, FieldType::REAL);
    EXPECT_EQ(fields[6].comment, "always 123.456");
    EXPECT_EQ(fields[8].charactersPerRegister, 2);
}

TEST_F(OrderTestBlockTest, RefusesWrongSizes)
{
    auto const block = Place("OrderTest", 300);
    std::vector<uint8> bytes(48);
    LayoutFacts const facts;
    auto const status = [&](void* destination, std::size_t size, void const* source, std::size_t sourceSize) {
        return RefusalOf([&] { block->Serialize(destination, size, source, sourceSize); }).status;
    };
    EXPECT_EQ(status(bytes.data(), 47, &facts, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(nullptr, 48, &facts, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(bytes.data(), 48, nullptr, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(bytes.data(), 48, &facts, 3), Zu::Status::WRONG_BUFFER_SIZE);
}

} // namespace ModbusTcp
