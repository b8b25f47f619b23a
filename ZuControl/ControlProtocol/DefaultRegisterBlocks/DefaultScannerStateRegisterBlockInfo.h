#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of the block with the state of one sensor group: 18 registers of one byte.
struct ZUCONTROL_API DefaultScannerStateRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    /// An optional block may be removed; otherwise one block must stay.
    explicit DefaultScannerStateRegisterBlockInfo(bool isOptional);
    ~DefaultScannerStateRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
