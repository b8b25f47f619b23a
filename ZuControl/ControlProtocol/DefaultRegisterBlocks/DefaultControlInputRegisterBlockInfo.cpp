#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

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
