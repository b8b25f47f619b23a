#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of the block that answers a command: one block, 3 registers of one byte.
struct ZUCONTROL_API DefaultControlOutputRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultControlOutputRegisterBlockInfo();
    ~DefaultControlOutputRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
