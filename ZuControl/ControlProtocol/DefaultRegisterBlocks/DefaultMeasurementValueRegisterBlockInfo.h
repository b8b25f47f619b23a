#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of blocks with the value of a measurement: 4 registers of one byte.
struct ZUCONTROL_API DefaultMeasurementValueRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementValueRegisterBlockInfo();
    ~DefaultMeasurementValueRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
