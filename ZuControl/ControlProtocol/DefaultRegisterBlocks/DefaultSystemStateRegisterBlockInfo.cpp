#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

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
