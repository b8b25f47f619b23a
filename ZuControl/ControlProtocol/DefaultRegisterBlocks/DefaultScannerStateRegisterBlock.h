#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block with the state of one sensor group, which its scanner id names.
struct ZUCONTROL_API DefaultScannerStateRegisterBlock : public ProtocolRegisterBlock
{
public:
    /// The source of `Serialize`. The protocol chooses the meaning of the two bytes.
    struct DefaultScannerStateData
    {
        uint8 scannerByte0;
        uint8 scannerByte1;
        int64 encoderValue;
        uint64 syncTime;
    };

    DefaultScannerStateRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultScannerStateRegisterBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination; the source is checked first.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size.
    uint64 scannerByte0 = 16;
    uint64 encoderValue = 0;
    uint64 syncTime = 8;
    uint64 scannerByte1 = 17;

private:
    size_t EndOfFields() const;
    void SerializeScannerStateData(uint8* destination, DefaultScannerStateData const& source);
};

static_assert(sizeof(DefaultScannerStateRegisterBlock::DefaultScannerStateData) == 24);

/// The type of the block with the state of one sensor group: 18 registers of one byte.
struct ZUCONTROL_API DefaultScannerStateRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    /// An optional block may be removed; otherwise one block must stay.
    explicit DefaultScannerStateRegisterBlockInfo(bool isOptional);
    ~DefaultScannerStateRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
