#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/KnownLayout.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "wApi/wString.h"

#include <algorithm>
#include <cstring>

namespace ZuControl::ControlProtocol
{

DefaultSystemStateRegisterBlock::DefaultSystemStateRegisterBlock(RegisterBlockParams const& params,
                                                                 ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
    scannerId.EnableUsed(true);
    scannerId.used.Set(false);
}

DefaultSystemStateRegisterBlock::~DefaultSystemStateRegisterBlock() = default;

void DefaultSystemStateRegisterBlock::Serialize(void* destination, size_t destinationSize, void const* source,
                                                size_t sourceSize)
{
    if (source == nullptr || sourceSize != sizeof(DefaultSystemStateData))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destination == nullptr || destinationSize != info.SerializedOutputSize() || !FieldsFit(EndOfFields()))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer size available for data serialization output.");
    }
    DefaultSystemStateData data;
    std::memcpy(&data, source, sizeof data);
    if (data.jobFileNameLength > JobFileNameMaxSize())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The job filename length specified [%d] is too long.",
                 int{data.jobFileNameLength});
    }
    SerializeSystemStatsData(static_cast<uint8*>(destination), data);
}

size_t DefaultSystemStateRegisterBlock::JobFileNameMaxSize()
{
    return JOB_FILE_NAME_CAPACITY;
}

size_t DefaultSystemStateRegisterBlock::EndOfFields() const
{
    return std::max({EndOfValue(stateByte0, 1), EndOfValue(value64, 8), EndOfValue(jobFileNameLength, 1),
                     EndOfValue(stateByte2, 1), EndOfValue(stateByte3, 1),
                     jobFileName + BytesPerRegister() * JobFileNameMaxSize()});
}

void DefaultSystemStateRegisterBlock::SerializeSystemStatsData(uint8* destination, DefaultSystemStateData const& source)
{
    ValueEncoder(); // throws for a register size other than 1 and 2
    uint8* const name = destination + jobFileName;
    size_t const bytesPerCharacter = BytesPerRegister();
    WithLayout(BytesPerRegister(), info.IsProtocolBigEndian(), [&](auto fields) {
        // In this order: in registers of two bytes the fields overlap, and clients rely on the bytes that stay.
        fields.Write(destination + stateByte0, source.stateByte0);
        fields.Write(destination + value64, source.value64);
        fields.Write(destination + jobFileNameLength, source.jobFileNameLength);
        fields.Write(destination + stateByte2, source.stateByte2);
        fields.Write(destination + stateByte3, source.stateByte3);
        ZU_CHECK(wMemSet(name, 0, bytesPerCharacter * JobFileNameMaxSize()));
        for (size_t i = 0; i < source.jobFileNameLength; ++i)
        {
            // A character is signed: beyond ASCII the high byte of a register of two bytes is all ones.
            fields.Write(name + bytesPerCharacter * i, static_cast<int8>(source.jobFileName[i]));
        }
    });
}

DefaultSystemStateRegisterBlockInfo::DefaultSystemStateRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "System",
           .displayName = "System State",
           .category = BlockCategorySystem,
           .deserializedInputSize = 0,
           .registerCount = 76,
           .bytesPerRegister = 1,
           .minInstanceCount = 1,
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultSystemStateRegisterBlock>>()})
{
}

DefaultSystemStateRegisterBlockInfo::~DefaultSystemStateRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
