#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/KnownLayout.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

#include <algorithm>
#include <limits>

namespace ZuControl::ControlProtocol
{

namespace
{

constexpr size_t ZEROS_BEHIND_INPUTS = 3;

/// The bits of the first input in the status of a stamp; the bits of the second input lie beside them.
constexpr uint16 STATUS_OF_FIRST_INPUT = 0x11;

} // namespace

DefaultStampRegisterBlock::DefaultStampRegisterBlock(RegisterBlockParams const& params,
                                                     ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo)
{
    scannerId.EnableUsed(true);
    scannerId.used.Set(false);
}

DefaultStampRegisterBlock::~DefaultStampRegisterBlock() = default;

void DefaultStampRegisterBlock::SerializeStampMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data)
{
    uint64 time = std::numeric_limits<uint64>::max();
    int64 encoderValue = std::numeric_limits<int64>::min();
    void* const msg = MessageOf(data->resultItem);
    wStamp const* const stamp = ZuVision::ZvMsg_StampAt(msg, 0);
    if (stamp == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    ExtendedStamp(msg, &time, &encoderValue);

    RegisterEncoder const encoder = ValueEncoder();
    uint8* const block = buffer + offset;
    if (data->serializeMode == SERIALIZE_COUNTER_ONLY)
    {
        CheckFit(EndOfValue(counterOffset, 8));
        encoder.Write(block + counterOffset, stamp->stampCounter);
        return;
    }
    CheckFit(EndOfFields());
    WithLayout(BytesPerRegister(), info.IsProtocolBigEndian(), [&](auto fields) {
        fields.Write(block + digitalInputsOffset, DigitalInputStateFromStamp(stamp));
        fields.Write(block + valueOffset, stamp->stampValue);
        fields.Write(block + encoderOffset, encoderValue);
        fields.Write(block + timeOffset, time);
        fields.Write(block + counterOffset, stamp->stampCounter);
        for (size_t i = 1; i <= ZEROS_BEHIND_INPUTS; ++i)
        {
            fields.Write(block + digitalInputsOffset + i, uint8{0});
        }
    });
}

uint8 DefaultStampRegisterBlock::DigitalInputStateFromStamp(wStamp const* stamp)
{
    bool const isFirstSet = (stamp->stampStatus & (STATUS_OF_FIRST_INPUT << InputIndexDigital1)) != 0;
    bool const isSecondSet = (stamp->stampStatus & (STATUS_OF_FIRST_INPUT << InputIndexDigital2)) != 0;
    return static_cast<uint8>((isFirstSet ? OutputBitMaskDigital1 : 0) | (isSecondSet ? OutputBitMaskDigital2 : 0));
}

void DefaultStampRegisterBlock::ExtendedStamp(void* msg, uint64* time, int64* encoder)
{
    if (wObject_Is(msg, ZuVision::ZvDataMsg_Class))
    {
        *time = ZuVision::ZvDataMsg_Time(msg);
        *encoder = ZuVision::ZvDataMsg_Encoder(msg);
        return;
    }
    if (wStamp const* const stamp = ZuVision::ZvMsg_StampAt(msg, 0); stamp != nullptr)
    {
        *time = stamp->stampTime;
        *encoder = stamp->stampEncoder;
    }
}

size_t DefaultStampRegisterBlock::EndOfFields() const
{
    size_t const lastWide = std::max({valueOffset, encoderOffset, timeOffset, counterOffset});
    return std::max(EndOfValue(digitalInputsOffset + ZEROS_BEHIND_INPUTS, 1), EndOfValue(lastWide, 8));
}

DefaultStampRegisterBlockInfo::DefaultStampRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Stamp",
           .displayName = "Stamp",
           .category = BlockCategoryStamp,
           .deserializedInputSize = 0,
           .registerCount = 36,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultStampRegisterBlock>>()})
{
}

DefaultStampRegisterBlockInfo::~DefaultStampRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
