#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandStatus.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block that answers a command.
struct ZUCONTROL_API DefaultControlOutputRegisterBlock : public ProtocolRegisterBlock
{
public:
    /// The source of `Serialize`.
    struct DefaultCommandResultData
    {
        uint16 requestId; ///< echoed from the command
        ControlRegisterCommandStatus status;
    };

    DefaultControlOutputRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultControlOutputRegisterBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination; the source is checked first.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size.
    size_t requestIdOffset = 0;
    size_t statusOffset = 2;

private:
    void SerializeCommandResultData(uint8* destination, DefaultCommandResultData const& source);
};

static_assert(sizeof(DefaultControlOutputRegisterBlock::DefaultCommandResultData) == 4);

/// The type of the block that answers a command: one block, 3 registers of one byte.
struct ZUCONTROL_API DefaultControlOutputRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultControlOutputRegisterBlockInfo();
    ~DefaultControlOutputRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
