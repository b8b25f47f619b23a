#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

#include <algorithm>

namespace ZuControl::ControlProtocol
{

DefaultMeasurementValueAndDecisionRegisterBlock::DefaultMeasurementValueAndDecisionRegisterBlock(
    RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo),
      DefaultMeasurementValueRegisterBlock(params, usedInfo),
      DefaultMeasurementDecisionRegisterBlock(params, usedInfo)
{
    valueOffset = 0;
    decisionOffset = 4;
}

DefaultMeasurementValueAndDecisionRegisterBlock::~DefaultMeasurementValueAndDecisionRegisterBlock() = default;

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeMeasurementMsg(uint8* buffer, size_t offset,
                                                                              DefaultScanOutputInputData const* data)
{
    int32 result = 0;
    int32 isOutOfRange = 0;
    int32 isInvalid = 0;
    void* item = data->resultItem;
    Convert64fTo32s(GetMeasurementValue(item), VALUE_SCALE, result, isOutOfRange, isInvalid);
    if (isOutOfRange != 0 || isInvalid != 0)
    {
        SerializeInvalidMeasurement(buffer, offset);
        return;
    }
    uint8 const decision = GetDecisionByte(item);
    RegisterEncoder const encoder = ValueEncoder();
    CheckBothFit();
    encoder.Write(buffer + offset + valueOffset, result);
    encoder.Write(buffer + offset + decisionOffset, decision);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeNullMsg(uint8* buffer, size_t offset)
{
    SerializeInvalidMeasurement(buffer, offset);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::SerializeInvalidMeasurement(uint8* buffer, size_t offset)
{
    CheckBothFit();
    SerializeInvalidMeasurementDecision(buffer, offset);
    SerializeInvalidMeasurementValue(buffer, offset);
}

void DefaultMeasurementValueAndDecisionRegisterBlock::CheckBothFit() const
{
    CheckFit(std::max(EndOfValue(valueOffset, sizeof(int32)), EndOfValue(decisionOffset, sizeof(uint8))));
}

DefaultMeasurementValueAndDecisionRegisterBlockInfo::DefaultMeasurementValueAndDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Measurement",
           .displayName = "Measurement and Decision",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 5,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory =
               std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueAndDecisionRegisterBlock>>()})
{
}

DefaultMeasurementValueAndDecisionRegisterBlockInfo::~DefaultMeasurementValueAndDecisionRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
