#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The block into which a client writes a command.
struct ZUCONTROL_API DefaultControlInputRegisterBlock : public ProtocolRegisterBlock
{
public:
    DefaultControlInputRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultControlInputRegisterBlock() override;

    /// Makes a ControlRegisterCommandData of the registers. Text is read for the loading of a job alone; what the source
    /// does not hold of it reads as NUL. Throws -992 for a source that is too short or another size of destination, and
    /// -997, no text, for a job without a name: the destination then holds what was read until there.
    void Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    // Bytes from the block's start; they do not scale with the register size.
    size_t requestIdOffset = 0;
    size_t commandIdOffset = 2;
    size_t textOffset = 3; ///< in registers of two bytes as well, inside the command id there

private:
    /// The registers as far as they are there.
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

} // namespace ZuControl::ControlProtocol
