#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "wApi/wString.h"

namespace ZuControl::ControlProtocol
{

DefaultControlInputRegisterBlock::DefaultControlInputRegisterBlock(RegisterBlockParams const& params,
                                                                   ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

DefaultControlInputRegisterBlock::~DefaultControlInputRegisterBlock() = default;

void DefaultControlInputRegisterBlock::Deserialize(void* destination, size_t destinationSize, void const* source,
                                                   size_t sourceSize)
{
    size_t const endOfCommandId = commandIdOffset + BytesPerRegister();
    if (source == nullptr || sourceSize < info.DeserializedInputSize() || sourceSize < requestIdOffset + 2 ||
        sourceSize < endOfCommandId)
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient source buffer size available for data deserialization.");
    }
    if (destination == nullptr || destinationSize != sizeof(ControlRegisterCommandData))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer available for data deserialization output.");
    }
    ZU_CHECK(wMemSet(destination, 0, destinationSize));
    DeserializeControlRegisterCommandData(*static_cast<ControlRegisterCommandData*>(destination),
                                          {static_cast<uint8 const*>(source), sourceSize});
}

void DefaultControlInputRegisterBlock::DeserializeControlRegisterCommandData(ControlRegisterCommandData& destination,
                                                                             Source const& source)
{
    destination.requestId = Read16(source, requestIdOffset);
    destination.commandId = ReadByte(source, commandIdOffset);
    if (destination.commandId != CommandLoadJob) // the text of the other commands does not come from registers
    {
        return;
    }
    DeserializeJobName(destination, source);
    if (destination.text[0] == '\0')
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
}

void DefaultControlInputRegisterBlock::DeserializeJobName(ControlRegisterCommandData& destination, Source const& source)
{
    for (size_t i = 0; i < ControlRegisterCommandData::TEXT_SIZE; ++i)
    {
        destination.text[i] = static_cast<char>(ReadByte(source, textOffset + BytesPerRegister() * i));
        if (destination.text[i] == '\0')
        {
            break;
        }
    }
    destination.text[ControlRegisterCommandData::TEXT_SIZE - 1] = '\0';
}

uint16 DefaultControlInputRegisterBlock::Read16(Source const& source, size_t offset)
{
    uint8 const bytes[2] = {offset < source.size ? source.bytes[offset] : uint8{0},
                            offset + 1 < source.size ? source.bytes[offset + 1] : uint8{0}};
    uint16 value = 0;
    Deserialize16(value, bytes, 0);
    return value;
}

uint8 DefaultControlInputRegisterBlock::ReadByte(Source const& source, size_t offset)
{
    if (BytesPerRegister() == 1)
    {
        return offset < source.size ? source.bytes[offset] : uint8{0};
    }
    return static_cast<uint8>(Read16(source, offset)); // the low byte of the register
}

DefaultControlInputRegisterBlockInfo::DefaultControlInputRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ControlInput",
           .displayName = "Control Input",
           .category = BlockCategoryControlInput,
           .deserializedInputSize = 67,
           .registerCount = 67,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultControlInputRegisterBlock>>()})
{
}

DefaultControlInputRegisterBlockInfo::~DefaultControlInputRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
