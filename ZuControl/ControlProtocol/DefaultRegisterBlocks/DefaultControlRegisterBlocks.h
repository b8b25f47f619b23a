#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block into which a client writes a command.
struct ZUCONTROL_API DefaultControlInputRegisterBlock : public ProtocolRegisterBlock
{
public:
    DefaultControlInputRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultControlInputRegisterBlock() override;

    /// Fills a ControlRegisterCommandData from the registers. The text is read for the command that loads a job alone;
    /// characters that the source does not hold read as NUL. Throws `Zu::Status::WRONG_BUFFER_SIZE` for a source that
    /// is too short or another size of destination, and `Zu::Status::BAD_ARGUMENT`, no text, for a job without a name:
    /// the destination then holds the members that are read by then.
    void Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size.
    size_t requestIdOffset = 0;
    size_t commandIdOffset = 2;
    size_t textOffset = 3; ///< also in registers of two bytes, where it lies inside the command id

private:
    /// The registers of the source, as far as it reaches.
    struct Source
    {
        uint8 const* bytes;
        size_t size;
    };

    void DeserializeControlRegisterCommandData(ControlRegisterCommandData& destination, Source const& source);
    void DeserializeJobName(ControlRegisterCommandData& destination, Source const& source);
    uint16 Read16(Source const& source, size_t offset);
    uint8 ReadByte(Source const& source, size_t offset);
};

/// The type of the block into which a client writes its commands: one block, 67 registers of one byte.
struct ZUCONTROL_API DefaultControlInputRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultControlInputRegisterBlockInfo();
    ~DefaultControlInputRegisterBlockInfo() override;
};

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
