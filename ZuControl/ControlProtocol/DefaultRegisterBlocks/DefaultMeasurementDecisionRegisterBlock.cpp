#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuVision/ZvMessages.h"

namespace ZuControl::ControlProtocol
{

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

} // namespace ZuControl::ControlProtocol
