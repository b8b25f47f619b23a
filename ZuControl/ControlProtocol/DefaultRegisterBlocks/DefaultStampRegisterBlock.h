#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/Export.h"

struct wStamp;

namespace ZuControl::ControlProtocol
{

/// A block with the stamp of a frame.
struct ZUCONTROL_API DefaultStampRegisterBlock : public ProtocolScanOutputRegisterBlock
{
public:
    static constexpr uint8 InputIndexDigital1 = 0;
    static constexpr uint8 InputIndexDigital2 = 1;
    static constexpr uint8 OutputBitMaskDigital1 = 1;
    static constexpr uint8 OutputBitMaskDigital2 = 2;

    DefaultStampRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultStampRegisterBlock() override;

    /// Throws `Zu::Status::NOT_SUPPORTED`, no text, for a message without a stamp.
    void SerializeStampMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;

    // Bytes from the block's start; they do not scale with the register size. Three zero bytes follow the digital
    // inputs.
    size_t digitalInputsOffset = 32;
    size_t valueOffset = 0;
    size_t encoderOffset = 8;
    size_t timeOffset = 16;
    size_t counterOffset = 24;

private:
    static uint8 DigitalInputStateFromStamp(wStamp const* stamp);
    /// Time and encoder of the message when it has its own, else those of its stamp.
    static void ExtendedStamp(void* msg, uint64* time, int64* encoder);
    size_t EndOfFields() const;
};

/// The type of blocks with the stamp of a frame: 36 registers of one byte.
struct ZUCONTROL_API DefaultStampRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultStampRegisterBlockInfo();
    ~DefaultStampRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
