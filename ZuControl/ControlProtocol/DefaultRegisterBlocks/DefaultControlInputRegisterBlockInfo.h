#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of the block into which a client writes its commands: one block, 67 registers of one byte.
struct ZUCONTROL_API DefaultControlInputRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultControlInputRegisterBlockInfo();
    ~DefaultControlInputRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
