#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

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
