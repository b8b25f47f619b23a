#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

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
