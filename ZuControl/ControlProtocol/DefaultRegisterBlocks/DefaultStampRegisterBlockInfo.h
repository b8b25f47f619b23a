#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of blocks with the stamp of a frame: 36 registers of one byte.
struct ZUCONTROL_API DefaultStampRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultStampRegisterBlockInfo();
    ~DefaultStampRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
