#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of the block with the state of the system: one block, 76 registers of one byte.
struct ZUCONTROL_API DefaultSystemStateRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultSystemStateRegisterBlockInfo();
    ~DefaultSystemStateRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
