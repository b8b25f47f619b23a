#include "ZuControl/Plc/PlcWords.h"

#include <gtest/gtest.h>

namespace ZuControl::Plc
{

using ControlProtocol::BlockOrder;
using ControlProtocol::FieldArea;
using ControlProtocol::FieldRole;
using ControlProtocol::FieldType;
using ControlProtocol::RegisterField;

TEST(PlcWords, NameEachTypeOrderRoleAndArea)
{
    EXPECT_STREQ(NameOf(FieldType::BOOL), "BOOL");
    EXPECT_STREQ(NameOf(FieldType::UINT), "UINT");
    EXPECT_STREQ(NameOf(FieldType::RAW), "RAW");
    EXPECT_STREQ(NameOf(BlockOrder::DCBA), "DCBA");
    EXPECT_STREQ(NameOf(FieldRole::FINGERPRINT), "fingerprint");
    EXPECT_STREQ(NameOf(FieldRole::QUEUE_ACKNOWLEDGE), "queueAcknowledge");
    EXPECT_STREQ(NameOf(FieldRole::QUEUE_LOST_BEFORE), "queueLostBefore");
    EXPECT_STREQ(NameOf(FieldArea::DISCRETE_INPUTS), "discreteInputs");
}

TEST(PlcWords, CountAddressesInTheTablesOfModbus)
{
    EXPECT_EQ(TableAddress(FieldArea::REGISTERS, 0), "400001");
    EXPECT_EQ(TableAddress(FieldArea::REGISTERS, 9999), "410000");
    EXPECT_EQ(TableAddress(FieldArea::DISCRETE_INPUTS, 4), "100005");
    EXPECT_EQ(TableAddress(FieldArea::COILS, 4), "000005");
}

TEST(PlcWords, ShowScalesAndInvalidValues)
{
    EXPECT_EQ(ScaleText(1), "1");
    EXPECT_EQ(ScaleText(1000), "0.001");
    auto const invalid = [](FieldType type, uint64 bits) {
        RegisterField field;
        field.type = type;
        field.invalid = bits;
        return InvalidText(field);
    };
    EXPECT_EQ(InvalidText(RegisterField{}), "");
    EXPECT_EQ(invalid(FieldType::DINT, 0x80000000), "-2147483648");
    EXPECT_EQ(invalid(FieldType::LINT, 0x8000000000000000), "-9223372036854775808");
    EXPECT_EQ(invalid(FieldType::ULINT, 0xFFFFFFFFFFFFFFFF), "18446744073709551615");
    EXPECT_EQ(invalid(FieldType::INT, 0x8000), "-32768");
    EXPECT_EQ(invalid(FieldType::UINT, 2), "2");
    EXPECT_EQ(invalid(FieldType::REAL, 0x7FC00000), "NaN");
}

} // namespace ZuControl::Plc
