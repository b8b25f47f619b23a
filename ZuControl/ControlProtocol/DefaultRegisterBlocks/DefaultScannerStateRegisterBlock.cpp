#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/KnownLayout.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <algorithm>
#include <cstring>

namespace ZuControl::ControlProtocol
{

DefaultScannerStateRegisterBlock::DefaultScannerStateRegisterBlock(RegisterBlockParams const& params,
                                                                   ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

DefaultScannerStateRegisterBlock::~DefaultScannerStateRegisterBlock() = default;

void DefaultScannerStateRegisterBlock::Serialize(void* destination, size_t destinationSize, void const* source,
                                                 size_t sourceSize)
{
    if (source == nullptr || sourceSize != sizeof(DefaultScannerStateData))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destination == nullptr || destinationSize != info.SerializedOutputSize() || !FieldsFit(EndOfFields()))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer sizes available for data serialization output.");
    }
    DefaultScannerStateData data;
    std::memcpy(&data, source, sizeof data);
    SerializeScannerStateData(static_cast<uint8*>(destination), data);
}

size_t DefaultScannerStateRegisterBlock::EndOfFields() const
{
    return std::max({EndOfValue(scannerByte0, 1), EndOfValue(encoderValue, 8), EndOfValue(syncTime, 8),
                     EndOfValue(scannerByte1, 1)});
}

void DefaultScannerStateRegisterBlock::SerializeScannerStateData(uint8* destination,
                                                                 DefaultScannerStateData const& source)
{
    ValueEncoder(); // throws for a register size other than 1 and 2
    WithLayout(BytesPerRegister(), info.IsProtocolBigEndian(), [&](auto fields) {
        fields.Write(destination + scannerByte0, source.scannerByte0);
        fields.Write(destination + encoderValue, source.encoderValue);
        fields.Write(destination + syncTime, source.syncTime);
        fields.Write(destination + scannerByte1, source.scannerByte1); // last: registers of two bytes overlap
    });
}

DefaultScannerStateRegisterBlockInfo::DefaultScannerStateRegisterBlockInfo(bool isOptional)
    : ProtocolRegisterBlockInfo(
          {.type = "Scanner",
           .displayName = "Sensor Group State",
           .category = BlockCategoryScanner,
           .deserializedInputSize = 0,
           .registerCount = 18,
           .bytesPerRegister = 1,
           .minInstanceCount = static_cast<uint16>(isOptional ? 0 : 1),
           .maxInstanceCount = 1,
           .hasDataSource = false,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultScannerStateRegisterBlock>>()})
{
}

DefaultScannerStateRegisterBlockInfo::~DefaultScannerStateRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
