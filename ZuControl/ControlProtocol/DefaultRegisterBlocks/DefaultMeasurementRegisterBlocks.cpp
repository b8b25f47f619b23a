#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuVision/ZvMessages.h"

#include <algorithm>

namespace ZuControl::ControlProtocol
{

DefaultMeasurementValueRegisterBlock::DefaultMeasurementValueRegisterBlock(RegisterBlockParams const& params,
                                                                           ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo)
{
    scannerId.EnableUsed(true);
    scannerId.used.Set(false);
}

DefaultMeasurementValueRegisterBlock::~DefaultMeasurementValueRegisterBlock() = default;

void DefaultMeasurementValueRegisterBlock::SerializeMeasurementMsg(uint8* buffer, size_t offset,
                                                                   DefaultScanOutputInputData const* data)
{
    int32 result = 0;
    int32 isOutOfRange = 0;
    int32 isInvalid = 0;
    void* item = data->resultItem;
    Convert64fTo32s(GetMeasurementValue(item), VALUE_SCALE, result, isOutOfRange, isInvalid);
    if (isOutOfRange != 0 || isInvalid != 0)
    {
        SerializeInvalidMeasurementValue(buffer, offset);
        return;
    }
    RegisterEncoder const encoder = ValueEncoder();
    CheckFit(EndOfValue(valueOffset, sizeof result));
    encoder.Write(buffer + offset + valueOffset, result);
}

void DefaultMeasurementValueRegisterBlock::SerializeNullMsg(uint8* buffer, size_t offset)
{
    SerializeInvalidMeasurementValue(buffer, offset);
}

double DefaultMeasurementValueRegisterBlock::GetMeasurementValue(void*& resultItem)
{
    void const* const msg = MessageOf(static_cast<ZuCore::ResultItem>(resultItem));
    if (!wObject_Is(msg, ZuVision::ZvMeasurementMsg_Class))
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return ZuVision::ZvMeasurementMsg_Value(msg);
}

void DefaultMeasurementValueRegisterBlock::SerializeInvalidMeasurementValue(uint8* buffer, size_t offset)
{
    size_t const width = std::max<size_t>(BytesPerRegister(), sizeof(int32));
    CheckFit(EndOfValue(valueOffset, width));
    SerializeInvalidValue(buffer, offset + valueOffset, width, true);
}

DefaultMeasurementValueRegisterBlockInfo::DefaultMeasurementValueRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "MeasurementValue", // its display name is the key of the type with the decision
           .displayName = "Measurement",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 4,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueRegisterBlock>>()})
{
}

DefaultMeasurementValueRegisterBlockInfo::~DefaultMeasurementValueRegisterBlockInfo() = default;

DefaultMeasurementDecisionRegisterBlock::DefaultMeasurementDecisionRegisterBlock(RegisterBlockParams const& params,
                                                                                 ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo)
{
    scannerId.EnableUsed(true);
    scannerId.used.Set(false);
}

DefaultMeasurementDecisionRegisterBlock::~DefaultMeasurementDecisionRegisterBlock() = default;

void DefaultMeasurementDecisionRegisterBlock::SerializeMeasurementMsg(uint8* buffer, size_t offset,
                                                                      DefaultScanOutputInputData const* data)
{
    void* item = data->resultItem;
    SerializeDecision(buffer, offset, GetDecisionByte(item));
}

void DefaultMeasurementDecisionRegisterBlock::SerializeNullMsg(uint8* buffer, size_t offset)
{
    SerializeInvalidMeasurementDecision(buffer, offset);
}

uint8 DefaultMeasurementDecisionRegisterBlock::GetDecision(uint8 decision, bool isValid)
{
    return isValid ? decision : static_cast<uint8>((invalidDecisionBit * 2) | decision);
}

uint8 DefaultMeasurementDecisionRegisterBlock::GetDecisionByte(void*& resultItem)
{
    void const* const msg = MessageOf(static_cast<ZuCore::ResultItem>(resultItem));
    if (!wObject_Is(msg, ZuVision::ZvMeasurementMsg_Class))
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    return ZuVision::ZvMeasurementMsg_Decision(msg);
}

void DefaultMeasurementDecisionRegisterBlock::SerializeInvalidMeasurementDecision(uint8* buffer, size_t offset)
{
    SerializeDecision(buffer, offset, static_cast<uint8>(invalidDecisionBit * 2));
}

void DefaultMeasurementDecisionRegisterBlock::SerializeDecision(uint8* buffer, size_t offset, uint8 decision)
{
    RegisterEncoder const encoder = ValueEncoder();
    CheckFit(EndOfValue(decisionOffset, sizeof decision));
    encoder.Write(buffer + offset + decisionOffset, decision);
}

DefaultMeasurementDecisionRegisterBlockInfo::DefaultMeasurementDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Decision",
           .displayName = "Decision",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 1,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementDecisionRegisterBlock>>()})
{
}

DefaultMeasurementDecisionRegisterBlockInfo::~DefaultMeasurementDecisionRegisterBlockInfo() = default;

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
