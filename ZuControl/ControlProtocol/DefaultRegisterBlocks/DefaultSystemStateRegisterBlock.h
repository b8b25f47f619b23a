#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block with the state of the system as a whole.
struct ZUCONTROL_API DefaultSystemStateRegisterBlock : public ProtocolRegisterBlock
{
public:
    static constexpr size_t JOB_FILE_NAME_CAPACITY = 64;

    /// What `Serialize` takes as source; the protocol chooses what the state bytes and the value mean.
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

    /// Throws -992 for another size of source or destination, the source first, and -997 for a name that is too long.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size, so that fields of one byte meet in registers
    // of two: the order of writing decides what stays.
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

} // namespace ZuControl::ControlProtocol
