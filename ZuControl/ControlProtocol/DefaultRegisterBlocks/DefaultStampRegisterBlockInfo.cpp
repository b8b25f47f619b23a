#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

DefaultStampRegisterBlockInfo::DefaultStampRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Stamp",
           .displayName = "Stamp",
           .category = BlockCategoryStamp,
           .deserializedInputSize = 0,
           .registerCount = 36,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultStampRegisterBlock>>()})
{
}

DefaultStampRegisterBlockInfo::~DefaultStampRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
