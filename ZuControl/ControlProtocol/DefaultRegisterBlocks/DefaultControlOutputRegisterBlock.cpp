#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <algorithm>
#include <cstring>

namespace ZuControl::ControlProtocol
{

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
