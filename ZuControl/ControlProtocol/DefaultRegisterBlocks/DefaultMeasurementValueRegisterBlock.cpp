#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"

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

} // namespace ZuControl::ControlProtocol
