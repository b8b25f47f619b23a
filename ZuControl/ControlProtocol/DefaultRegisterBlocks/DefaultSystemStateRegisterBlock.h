#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block with the state of the system as a whole.
struct ZUCONTROL_API DefaultSystemStateRegisterBlock : public ProtocolRegisterBlock
{
public:
    static constexpr size_t JOB_FILE_NAME_CAPACITY = 64;

    /// The source of `Serialize`. The protocol chooses the meaning of the state bytes and of the value.
    struct DefaultSystemStateData
    {
        uint8 stateByte0;
        uint8 jobFileNameLength; ///< characters in the name
        uint8 stateByte2;
        uint8 stateByte3;
        uint64 value64;
        char jobFileName[JOB_FILE_NAME_CAPACITY]; ///< without a NUL when it is full
    };

    DefaultSystemStateRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultSystemStateRegisterBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination, the source first, and
    /// `Zu::Status::BAD_ARGUMENT` for a name that is too long.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size. In registers of two bytes, fields of one
    // byte therefore overlap, and the field that is written last stays.
    uint16 stateByte0 = 8;
    uint16 value64 = 0;
    uint16 jobFileNameLength = 9;
    uint16 jobFileName = 10;
    uint16 stateByte2 = 74;
    uint16 stateByte3 = 75;

private:
    static size_t JobFileNameMaxSize();
    size_t EndOfFields() const;
    void SerializeSystemStatsData(uint8* destination, DefaultSystemStateData const& source);
};

static_assert(sizeof(DefaultSystemStateRegisterBlock::DefaultSystemStateData) == 80);

/// The type of the block with the state of the system: one block, 76 registers of one byte.
struct ZUCONTROL_API DefaultSystemStateRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultSystemStateRegisterBlockInfo();
    ~DefaultSystemStateRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
