#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "wApi/wString.h"

#include <algorithm>
#include <cstring>

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

DefaultControlOutputRegisterBlock::DefaultControlOutputRegisterBlock(RegisterBlockParams const& params,
                                                                     ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

DefaultControlOutputRegisterBlock::~DefaultControlOutputRegisterBlock() = default;

void DefaultControlOutputRegisterBlock::Serialize(void* destination, size_t destinationSize, void const* source,
                                                  size_t sourceSize)
{
    if (source == nullptr || sourceSize != sizeof(DefaultCommandResultData))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    size_t const endOfFields = std::max(EndOfValue(requestIdOffset, 2), EndOfValue(statusOffset, 1));
    if (destination == nullptr || destinationSize != info.SerializedOutputSize() || !FieldsFit(endOfFields))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer available for data serialization output.");
    }
    DefaultCommandResultData data;
    std::memcpy(&data, source, sizeof data);
    SerializeCommandResultData(static_cast<uint8*>(destination), data);
}

void DefaultControlOutputRegisterBlock::SerializeCommandResultData(uint8* destination,
                                                                   DefaultCommandResultData const& source)
{
    RegisterEncoder const encoder = ValueEncoder();
    encoder.Write(destination + requestIdOffset, source.requestId);
    encoder.Write(destination + statusOffset, static_cast<uint8>(source.status));
}

DefaultControlOutputRegisterBlockInfo::DefaultControlOutputRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "ControlOutput",
           .displayName = "Control Output",
           .category = BlockCategoryControlOutput,
           .deserializedInputSize = 0,
           .registerCount = 3,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultControlOutputRegisterBlock>>()})
{
}

DefaultControlOutputRegisterBlockInfo::~DefaultControlOutputRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
