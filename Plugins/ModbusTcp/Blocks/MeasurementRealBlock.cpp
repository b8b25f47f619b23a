#include "Plugins/ModbusTcp/Blocks/MeasurementRealBlock.h"

#include <bit>
#include <cmath>
#include <limits>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

static_assert(std::numeric_limits<float>::is_iec559);
constexpr uint32 QUIET_NAN = 0x7FC00000;

/// A missing value, the lowest number of 64 bits, does not fit either.
float ToReal(double value)
{
    bool const fits = std::abs(value) <= double{std::numeric_limits<float>::max()}; // false for NaN
    return fits ? static_cast<float>(value) : std::bit_cast<float>(QUIET_NAN);
}

} // namespace

MeasurementRealBlock::MeasurementRealBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo), // a virtual base
      DefaultMeasurementValueRegisterBlock(params, usedInfo)
{
}

MeasurementRealBlock::~MeasurementRealBlock() = default;

void MeasurementRealBlock::SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data)
{
    void* item = data->resultItem;
    Write(buffer, offset, ToReal(GetMeasurementValue(item)));
}

void MeasurementRealBlock::SerializeNullMsg(uint8* buffer, size_t offset)
{
    SerializeInvalidMeasurementValue(buffer, offset);
}

std::vector<RegisterField> MeasurementRealBlock::Fields() const
{
    FieldList list(*this);
    RegisterField& value = list.Number("real", FieldType::REAL, valueOffset);
    value.unit = UnitOfSource(DataSource());
    value.invalid = QUIET_NAN;
    value.comment = "measured value; NaN if it is missing";
    return list.Take();
}

void MeasurementRealBlock::SerializeInvalidMeasurementValue(uint8* buffer, size_t offset)
{
    Write(buffer, offset, std::bit_cast<float>(QUIET_NAN));
}

void MeasurementRealBlock::Write(uint8* buffer, size_t offset, float value)
{
    RegisterEncoder const encoder = ValueEncoder();
    CheckFit(EndOfValue(valueOffset, sizeof value));
    encoder.Write(buffer + offset + valueOffset, std::bit_cast<uint32>(value));
}

} // namespace ModbusTcp
